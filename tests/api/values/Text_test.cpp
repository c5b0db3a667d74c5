#include <vorlund/Text.h>

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace vorlund::test {
namespace {

using namespace std::string_literals;

constexpr const wchar* kMixed = VRL_L("a\u00E9\u20AC\U0001F600");
constexpr const char* kMixedUtf8 = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";

/// UTF-16 and its UTF-8, both ways.
struct TTextPair {
    wstring wide;
    std::string utf8;
};

const std::vector<TTextPair> kPairs{
    {VRL_L(""), ""},
    {VRL_L("plain"), "plain"},
    {kMixed, kMixedUtf8},
    {VRL_L("\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF"),
     "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
    {wstring(VRL_L("a\0b"), 3), "a\0b"s},
};

TEST(Text, GoesBothWays) {
    for (const TTextPair& pair : kPairs) {
        EXPECT_EQ(TextToUtf8(pair.wide), pair.utf8);
        EXPECT_EQ(TextFromUtf8(pair.utf8), pair.wide) << pair.utf8;
    }
}

TEST(Text, LoneSurrogatesAreReplaced) {
    const wstring lone{wchar(0xD800), wchar('a'), wchar(0xDC00), wchar(0xDBFF)};
    EXPECT_EQ(TextToUtf8(lone), "\xEF\xBF\xBD"
                                "a\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Text, EachByteThatIsNoCharacterIsReplaced) {
    struct TBad {
        std::string bytes;
        std::size_t replaced;
    };
    const std::vector<TBad> bad{
        {"\x80", 1},
        {"\xC3", 1},
        {"\xC0\x80", 2},         // too long a form
        {"\xE0\x80\x80", 3},     // the same
        {"\xED\xA0\x80", 3},     // half of a pair
        {"\xED\xB0\x80", 3},     // the other half
        {"\xF0\x9F", 2},         // the text ends inside
        {"\xF4\x90\x80\x80", 4}, // above the last number
        {"\xF8\x88\x80\x80\x80", 5},
        {"\xE2\x82", 2},
        {"\xFF\xFE", 2},
    };
    for (const TBad& one : bad) {
        EXPECT_EQ(TextFromUtf8("<" + one.bytes + ">"),
                  VRL_L("<") + wstring(one.replaced, wchar(0xFFFD)) + VRL_L(">"))
            << testing::PrintToString(one.bytes);
    }
}

TEST(Text, StringsAreMadeOfViewsUpToAZero) {
    EXPECT_TRUE(MakeString({}) == VRL_L(""));
    EXPECT_TRUE(MakeString(wstring(kMixed)) == kMixed);
    EXPECT_TRUE(MakeString(wstring(VRL_L("a\0b"), 3)) == VRL_L("a"));
    EXPECT_EQ(ViewOf(CString(kMixed)), wstring(kMixed));
    EXPECT_EQ(ToUtf8(StringFromUtf8(kMixedUtf8)), kMixedUtf8);
}

TEST(Text, WorksWithTheStandardLibrary) {
    std::ostringstream out;
    out << CString(kMixed);
    EXPECT_EQ(out.str(), kMixedUtf8);

    std::unordered_map<CString, int> numbers;
    numbers[VRL_L("one")] = 1;
    numbers[VRL_L("two")] = 2;
    numbers[CString("one")] += 10;
    EXPECT_EQ(numbers.size(), 2u);
    EXPECT_EQ(numbers[VRL_L("one")], 11);

    wstring units;
    for (const wchar unit : CString(kMixed)) units += unit;
    EXPECT_EQ(units, kMixed);
}

TEST(Text, TwoTextsAreCompared) {
    CString a(VRL_L("a"));
    CString b(VRL_L("b"));
    const CString sameAsA(a);
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(a <= b);
    EXPECT_FALSE(a > b);
    EXPECT_FALSE(a >= b);
    EXPECT_TRUE(a <= sameAsA);
    EXPECT_TRUE(a >= sameAsA);
    EXPECT_FALSE(sameAsA < a);
    EXPECT_TRUE(b > sameAsA);
}

TEST(Text, UnitsAreTextsOfOneUnit) {
    CString text;
    text += wchar('x');
    EXPECT_TRUE(text == wchar('x'));
    EXPECT_FALSE(text == wchar('y'));
    EXPECT_TRUE(text != wchar('y'));
    EXPECT_TRUE(text + wchar('y') == VRL_L("xy"));
    EXPECT_TRUE(text == VRL_L("x"));
    EXPECT_TRUE(CString() == wchar());
    text += wchar();
    EXPECT_TRUE(text == VRL_L("x"));
    EXPECT_TRUE(CString(nullptr) == VRL_L(""));
}

TEST(Text, WideIntegersAreIndexes) {
    CString text(VRL_L("abc"));
    const CString& same = text;
    EXPECT_EQ(text[std::size_t{1}], wchar('b'));
    EXPECT_EQ(same[2L], wchar('c'));
    EXPECT_EQ(same[-1LL], wchar('c'));
    text[0UL] = wchar('x');
    EXPECT_TRUE(text == VRL_L("xbc"));
    for (const long long index :
         {std::numeric_limits<long long>::min(), -4LL, 3LL, 1LL << 32, std::numeric_limits<long long>::max()})
        EXPECT_EQ(same[index], wchar()) << index;
    EXPECT_EQ(same[std::numeric_limits<unsigned long long>::max()], wchar());
}

} // namespace
} // namespace vorlund::test
