// Texts that are put together.
#include "support/Text.h"

#include <vorlund/StringBuilder.h>

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace vorlund::test {
namespace {

TEST(StringBuilder, AppendsAllKinds) {
    CStringBuilder builder;
    EXPECT_TRUE(builder.IsEmpty());
    EXPECT_EQ(*builder.GetBuffer(), 0);
    builder.Append(VRL_L("wide ")).Append("narrow ").Append(CString("string ")).Append(wchar{0x20AC});
    builder += VRL_L("!");
    builder += "?";
    builder += CString("#");
    builder += wchar{'.'};
    builder.Append(VRL_L("abc"), 2);
    EXPECT_EQ(wstring(builder.GetBuffer()), VRL_L("wide narrow string \u20AC!?#.ab"));
    EXPECT_EQ(builder.Length(), wstring(builder.GetBuffer()).size());
    EXPECT_EQ(builder.ToString(), builder.GetBuffer());
    EXPECT_EQ(wstring(CStringBuilder(VRL_L("x")).GetBuffer()), VRL_L("x"));
}

TEST(StringBuilder, NullIsEmpty) {
    CStringBuilder builder(VRL_L("a"));
    builder.Append(static_cast<const wchar*>(nullptr)).Append(static_cast<const char*>(nullptr));
    builder.Append(nullptr, 7);
    EXPECT_EQ(builder.Length(), 1u);
}

TEST(StringBuilder, NarrowBytesAreWidenedWithTheirSign) {
    CStringBuilder builder;
    builder.Append("\xE9");
    EXPECT_EQ(builder[0], 0xFFE9);
    EXPECT_EQ(builder.ToString(), CString("\xE9").GetBuffer());
}

TEST(StringBuilder, TakesItsOwnText) {
    CStringBuilder builder(VRL_L("abc"));
    for (int i = 0; i < 8; ++i) builder.Append(builder.GetBuffer());
    EXPECT_EQ(builder.Length(), 3u << 8);
    builder.Append(builder.GetBuffer() + 1, 4);
    EXPECT_EQ(builder[builder.Length() - 1], 'b');
}

TEST(StringBuilder, UnitsAreReadAndChanged) {
    CStringBuilder builder(VRL_L("abc"));
    builder.Set(1, 0);
    builder.Set(3, 'x');
    EXPECT_EQ(builder[0], 'a');
    EXPECT_EQ(builder[1], 0);
    EXPECT_EQ(builder[2], 'c');
    EXPECT_EQ(builder[3], 0);
    EXPECT_EQ(builder[~std::size_t{0}], 0);
    EXPECT_EQ(builder.Length(), 3u);
    // In a CString a zero unit ends the text.
    EXPECT_EQ(builder.ToString().Length(), 1u);
}

TEST(StringBuilder, IsCutAndEmptied) {
    CStringBuilder builder(VRL_L("abcdef"));
    builder.Cut(9);
    EXPECT_EQ(builder.Length(), 6u);
    builder.Cut(2);
    EXPECT_EQ(wstring(builder.GetBuffer()), VRL_L("ab"));
    builder.Reserve(1000);
    const wchar* const room = builder.GetBuffer();
    builder.Clear();
    EXPECT_TRUE(builder.IsEmpty());
    for (int i = 0; i < 1000; ++i) builder.Append(wchar{'x'});
    EXPECT_EQ(builder.GetBuffer(), room);
}

TEST(StringBuilder, GivesWhatCStringGives) {
    std::mt19937 random(1);
    CString text;
    CStringBuilder builder;
    for (int i = 0; i < 500; ++i) {
        const wstring piece(random() % 7, static_cast<wchar>('a' + i % 26));
        text += piece.c_str();
        builder += piece.c_str();
        ASSERT_EQ(builder.ToString(), text.GetBuffer());
        ASSERT_EQ(builder.Length(), text.Length());
    }
}

} // namespace
} // namespace vorlund::test
