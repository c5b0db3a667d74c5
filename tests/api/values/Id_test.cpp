#include <vorlund/Id.h>

#include "support/Text.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

using vorlund::CId;
using vorlund::test::Narrow;

// A plain value that tables of constants can hold.
static_assert(sizeof(CId) == 16);
static_assert(std::is_trivially_copyable_v<CId>);
static_assert(std::is_trivially_destructible_v<CId>);
static_assert(std::is_standard_layout_v<CId>);
static_assert(CId() == CId::Null());
static_assert(CId(1, 2, 3, 4).GetWord(0) == 1 && CId(1, 2, 3, 4).GetWord(3) == 4);
static_assert(CId(0, 0, 0, 1) < CId(0, 0, 1, 0));
constinit CId constant(0x90832171, 0xF23F4997, 0xBC71E87A, 0x6E3A3063);

void ExpectWords(const CId& id, unsigned int word0, unsigned int word1, unsigned int word2,
                 unsigned int word3) {
    EXPECT_EQ(id.GetWord(0), word0);
    EXPECT_EQ(id.GetWord(1), word1);
    EXPECT_EQ(id.GetWord(2), word2);
    EXPECT_EQ(id.GetWord(3), word3);
}

TEST(Id, DefaultAndNullAreAllZeros) {
    ExpectWords(CId(), 0, 0, 0, 0);
    ExpectWords(CId::Null(), 0, 0, 0, 0);
    CId value;
    ExpectWords(value, 0, 0, 0, 0);
}

TEST(Id, WordsAreTakenInArgumentOrder) {
    ExpectWords(CId(0x90832171, 0xF23F4997, 0xBC71E87A, 0x6E3A3063), 0x90832171, 0xF23F4997, 0xBC71E87A,
                0x6E3A3063);
    ExpectWords(constant, 0x90832171, 0xF23F4997, 0xBC71E87A, 0x6E3A3063);
}

TEST(Id, CopyAndAssignmentCopyAllWords) {
    const CId source(1, 2, 3, 4);
    CId copy(source);
    ExpectWords(copy, 1, 2, 3, 4);
    CId target(5, 6, 7, 8);
    EXPECT_EQ(&(target = source), &target);
    ExpectWords(target, 1, 2, 3, 4);
    CId& alias = target;
    target = alias;
    ExpectWords(target, 1, 2, 3, 4);
}

struct TOrderRow {
    const char* name;
    CId less;
    CId greater;
};

class IdOrder : public testing::TestWithParam<TOrderRow> {};

TEST_P(IdOrder, AllSixComparisonsAgree) {
    const auto& [name, less, greater] = GetParam();
    EXPECT_TRUE(less < greater);
    EXPECT_TRUE(less <= greater);
    EXPECT_FALSE(less > greater);
    EXPECT_FALSE(less >= greater);
    EXPECT_FALSE(less == greater);
    EXPECT_TRUE(less != greater);
    EXPECT_FALSE(greater < less);
    EXPECT_FALSE(greater <= less);
    EXPECT_TRUE(greater > less);
    EXPECT_TRUE(greater >= less);
    EXPECT_FALSE(greater == less);
    EXPECT_TRUE(greater != less);
}

TEST_P(IdOrder, EqualIdentifiers) {
    for (const CId& left : {GetParam().less, GetParam().greater}) {
        const CId right(left);
        EXPECT_FALSE(left < right);
        EXPECT_TRUE(left <= right);
        EXPECT_FALSE(left > right);
        EXPECT_TRUE(left >= right);
        EXPECT_TRUE(left == right);
        EXPECT_FALSE(left != right);
    }
}

constexpr unsigned int kMax = 0xFFFFFFFF;
INSTANTIATE_TEST_SUITE_P(
    Rows, IdOrder,
    testing::Values(TOrderRow{"Word3BelowWord2", {0, 0, 0, 1}, {0, 0, 1, 0}},
                    TOrderRow{"UnsignedWord0", {0x7FFFFFFF, kMax, kMax, kMax}, {0x80000000, 0, 0, 0}},
                    TOrderRow{"UnsignedWord1", {5, 0x7FFFFFFF, kMax, kMax}, {5, 0x80000000, 0, 0}},
                    TOrderRow{"UnsignedWord2", {5, 6, 0x7FFFFFFF, kMax}, {5, 6, 0x80000000, 0}},
                    TOrderRow{"UnsignedWord3", {5, 6, 7, 0x7FFFFFFF}, {5, 6, 7, 0x80000000}},
                    TOrderRow{"Word0Decides", {1, kMax, kMax, kMax}, {2, 0, 0, 0}},
                    TOrderRow{"Word1Decides", {1, 1, kMax, kMax}, {1, 2, 0, 0}},
                    TOrderRow{"Word2Decides", {1, 1, 1, kMax}, {1, 1, 2, 0}},
                    TOrderRow{"Word3Decides", {1, 1, 1, 1}, {1, 1, 1, 2}},
                    TOrderRow{"NullIsLeast", {0, 0, 0, 0}, {0, 0, 0, 1}}),
    [](const auto& row) { return row.param.name; });

struct TParseRow {
    const char* name;
    const char* text;
    CId id;
};

class IdParse : public testing::TestWithParam<TParseRow> {};

TEST_P(IdParse, Narrow) {
    EXPECT_EQ(Narrow(CId(GetParam().text).ToString()), Narrow(GetParam().id.ToString()));
}

TEST_P(IdParse, Wide) {
    vorlund::wstring wide;
    // Widened by sign extension, as narrow text is everywhere in the library.
    for (const char* at = GetParam().text; *at; ++at)
        wide += static_cast<vorlund::wchar>(static_cast<signed char>(*at));
    EXPECT_EQ(Narrow(CId(wide.c_str()).ToString()), Narrow(GetParam().id.ToString()));
}

constexpr CId kObject(0x90832171, 0xF23F4997, 0xBC71E87A, 0x6E3A3063);
INSTANTIATE_TEST_SUITE_P(
    Rows, IdParse,
    testing::Values(TParseRow{"Braces", "{90832171,F23F4997,BC71E87A,6E3A3063}", kObject},
                    TParseRow{"LowerCase", "{90832171,f23f4997,bc71e87a,6e3a3063}", kObject},
                    TParseRow{"MixedCase", "{90832171,F23f4997,bC71E87a,6E3a3063}", kObject},
                    TParseRow{"BareDigits", "90832171F23F4997BC71E87A6E3A3063", kObject},
                    TParseRow{"Hyphens", "90832171-F23F-4997-BC71-E87A6E3A3063", kObject},
                    TParseRow{"Blanks", "  9 0 8 3 2 1 7 1 F23F4997 BC71E87A\t6E3A3063\n", kObject},
                    TParseRow{"LettersBeyondFAreSkipped", "g90832171hF23F4997zBC71E87AG6E3A3063Z", kObject},
                    TParseRow{"NeighboursOfDigitsAreSkipped", "/:@G`g90832171F23F4997BC71E87A6E3A3063",
                              kObject},
                    TParseRow{"BytesBeyondAsciiAreSkipped",
                              "\xE9\xB1\x80\xFF"
                              "90832171F23F4997BC71E87A6E3A3063",
                              kObject},
                    TParseRow{"FortyDigits", "90832171F23F4997BC71E87A6E3A306312345678", kObject},
                    TParseRow{"RestIsIgnored", "90832171F23F4997BC71E87A6E3A3063,and more: face", kObject},
                    TParseRow{"OneDigit", "1", {0x10000000, 0, 0, 0}},
                    TParseRow{"EightDigits", "12345678", {0x12345678, 0, 0, 0}},
                    TParseRow{"NineDigits", "123456789", {0x12345678, 0x90000000, 0, 0}},
                    TParseRow{"ThirtyOneDigits",
                              "90832171F23F4997BC71E87A6E3A306",
                              {0x90832171, 0xF23F4997, 0xBC71E87A, 0x6E3A3060}},
                    TParseRow{"DigitsOnlyWithinWords", "a-b", {0xAB000000, 0, 0, 0}},
                    TParseRow{"NoDigit", "xyz", {}}, TParseRow{"OnlySeparators", "{,,,}", {}},
                    TParseRow{"Empty", "", {}},
                    TParseRow{"AllOnes", "FFFFFFFFffffffffFFFFFFFFffffffff", {kMax, kMax, kMax, kMax}},
                    TParseRow{"EveryDigit",
                              "0123456789ABCDEFabcdef9876543210",
                              {0x01234567, 0x89ABCDEF, 0xABCDEF98, 0x76543210}}),
    [](const auto& row) { return row.param.name; });

TEST(Id, WideUnitsThatOnlyLookLikeDigitsAreSkipped) {
    // Full-width 1, and units whose low byte is a digit.
    const vorlund::wchar text[] = {0xFF11, 0x0131, 0x3041, 0xD841, 0xDC61, '2', 0};
    ExpectWords(CId(text), 0x20000000, 0, 0, 0);
}

TEST(Id, NullPointersGiveTheNullIdentifier) {
    EXPECT_EQ(CId(static_cast<const char*>(nullptr)), CId::Null());
    EXPECT_EQ(CId(static_cast<const vorlund::wchar*>(nullptr)), CId::Null());
}

TEST(Id, NarrowTextOfAnyLengthIsSafe) {
    for (const std::size_t length : {259u, 260u, 261u, 4096u, 1u << 20}) {
        // Digits at the very end are found, those after a full identifier are not.
        const std::string late = std::string(length - 8, '-') + "90832171";
        ExpectWords(CId(late.c_str()), 0x90832171, 0, 0, 0);
        const std::string digits(length, 'f');
        ExpectWords(CId(digits.c_str()), kMax, kMax, kMax, kMax);
        const std::string none(length, 'x');
        ExpectWords(CId(none.c_str()), 0, 0, 0, 0);
    }
}

struct TTextRow {
    const char* name;
    CId id;
    const char* text;
};

class IdText : public testing::TestWithParam<TTextRow> {};

TEST_P(IdText, PrintsAndParsesBack) {
    const vorlund::wstring text = GetParam().id.ToString();
    EXPECT_EQ(Narrow(text), GetParam().text);
    EXPECT_EQ(text.size(), 37u);
    EXPECT_EQ(CId(text.c_str()), GetParam().id);
    EXPECT_EQ(CId(GetParam().text), GetParam().id);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, IdText,
    testing::Values(TTextRow{"Object", kObject, "{90832171,F23F4997,BC71E87A,6E3A3063}"},
                    TTextRow{"Null", {}, "{00000000,00000000,00000000,00000000}"},
                    TTextRow{"LeadingZeros", {0xA, 0, 0, 0}, "{0000000A,00000000,00000000,00000000}"},
                    TTextRow{"EachWord", {1, 0x20, 0x300, 0x4000}, "{00000001,00000020,00000300,00004000}"},
                    TTextRow{"AllOnes", {kMax, kMax, kMax, kMax}, "{FFFFFFFF,FFFFFFFF,FFFFFFFF,FFFFFFFF}"},
                    TTextRow{"EveryDigit",
                             {0x01234567, 0x89ABCDEF, 0xFEDCBA98, 0x76543210},
                             "{01234567,89ABCDEF,FEDCBA98,76543210}"}),
    [](const auto& row) { return row.param.name; });

} // namespace
