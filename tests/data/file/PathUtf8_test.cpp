#include "support/Text.h"

#include <vorlund/Path.h>

#include <gtest/gtest.h>

using namespace vorlund;
using vorlund::test::Narrow;

namespace {

struct TRow {
    const char* utf8;
    const wchar* path;
};

constexpr TRow kRows[] = {
    {"", VRL_L("")},
    {"a/b.wav", VRL_L("a/b.wav")},
    {"\xC3\xA9", VRL_L("\u00E9")},
    {"\xE2\x82\xAC", VRL_L("\u20AC")},
    {"\xF0\x9D\x84\x9E", VRL_L("\U0001D11E")},
};

TEST(PathUtf8, ConvertsBothWays) {
    for (const TRow& row : kRows) {
        EXPECT_EQ(Narrow(PathFromUtf8(row.utf8).c_str()), Narrow(row.path)) << row.utf8;
        EXPECT_EQ(PathToUtf8(row.path), row.utf8);
    }
}

TEST(PathUtf8, NullIsTheEmptyPath) {
    EXPECT_TRUE(PathFromUtf8(nullptr).empty());
    EXPECT_TRUE(PathToUtf8(nullptr).empty());
}

TEST(PathUtf8, LoneSurrogateBecomesTheReplacementCharacter) {
    constexpr wchar kHigh[] = {0xD800, 'a', 0};
    constexpr wchar kLow[] = {'a', 0xDC00, 0};
    EXPECT_EQ(PathToUtf8(kHigh), "\xEF\xBF\xBD"
                                 "a");
    EXPECT_EQ(PathToUtf8(kLow), "a\xEF\xBF\xBD");
    constexpr wchar kHalfAtTheEnd[] = {'a', 0xD800, 0};
    EXPECT_EQ(PathToUtf8(kHalfAtTheEnd), "a\xEF\xBF\xBD");
    // What is whole stays, in front of it and behind it.
    constexpr wchar kBetween[] = {0xD834, 0xDD1E, 0xD800, 0xD834, 0xDD1E, 0xD800, 0};
    EXPECT_EQ(PathToUtf8(kBetween), "\xF0\x9D\x84\x9E\xEF\xBF\xBD\xF0\x9D\x84\x9E\xEF\xBF\xBD");
}

} // namespace
