#include "vorlund/api/text/Utf8.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace vorlund::test {
namespace {

struct TRow {
    const char* name;
    const wchar* text;
    const char* expected;
};

class Utf8 : public testing::TestWithParam<TRow> {};

TEST_P(Utf8, Encodes) {
    std::pmr::string out = "<";
    AppendUtf8(out, GetParam().text);
    EXPECT_EQ(std::string(out), std::string("<") + GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, Utf8,
    testing::Values(TRow{"Empty", VRL_L(""), ""}, TRow{"Ascii", VRL_L("a\x7F"), "a\x7F"},
                    TRow{"TwoBytes", VRL_L("\u0080\u07FF"), "\xC2\x80\xDF\xBF"},
                    TRow{"ThreeBytes", VRL_L("\u0800\uFFFF"), "\xE0\xA0\x80\xEF\xBF\xBF"},
                    TRow{"FourBytes", VRL_L("\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
                    TRow{"LoneHigh", VRL_L("\xD800") VRL_L("a"), "\xEF\xBF\xBD\x61"},
                    TRow{"LoneLow", VRL_L("\xDFFF") VRL_L("a"), "\xEF\xBF\xBD\x61"},
                    TRow{"BackslashOfAName", VRL_L("a\xDC5C") VRL_L("b"), "a\\b"},
                    TRow{"BesideIt", VRL_L("\xDC5B\xDC5D"), "\xEF\xBF\xBD\xEF\xBF\xBD"},
                    TRow{"HighAtTheEnd", VRL_L("a\xDBFF"), "a\xEF\xBF\xBD"},
                    TRow{"TwoHighs", VRL_L("\xD83D\xD83D\xDE00"), "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
                    TRow{"WrongOrder", VRL_L("\xDE00\xD83D"), "\xEF\xBF\xBD\xEF\xBF\xBD"}),
    [](const auto& row) { return row.param.name; });

TEST(Utf8CodePoints, SurrogatesAreToldApartAndJoined) {
    for (const char32_t unit : {0xD800, 0xDBFF, 0x1D800, 0x1DC00, 0xD7FF, 0xDC00, 0xDFFF, 0xE000}) {
        EXPECT_EQ(IsHighSurrogate(unit), unit == 0xD800 || unit == 0xDBFF) << std::uint32_t{unit};
        EXPECT_EQ(IsLowSurrogate(unit), unit == 0xDC00 || unit == 0xDFFF) << std::uint32_t{unit};
    }
    EXPECT_EQ(std::uint32_t{JoinSurrogates(0xD800, 0xDC00)}, 0x10000u);
    EXPECT_EQ(std::uint32_t{JoinSurrogates(0xDBFF, 0xDFFF)}, 0x10FFFFu);
}

TEST(Utf8CodePoints, ALoneSurrogateHasThreeBytes) {
    const TUtf8 low = EncodeUtf8(0xDC80);
    EXPECT_EQ(std::string(low.bytes, low.length), "\xED\xB2\x80");
}

} // namespace
} // namespace vorlund::test
