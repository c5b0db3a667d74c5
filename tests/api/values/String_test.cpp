/// Construction, assignment, access, comparison, concatenation and copying out.
#include <vorlund/String.h>

#include "support/Text.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <new>
#include <string>
#include <type_traits>

namespace {

using vorlund::CString;
using vorlund::wchar;
using vorlund::wstring;
using vorlund::test::Narrow;

/// The overload for const texts must be asked for by name.
const CString& Const(const CString& text) {
    return text;
}

// What the declarations promise: const texts give no writable unit.
static_assert(std::is_same_v<decltype(std::declval<const CString&>().GetBuffer()), const wchar*>);
static_assert(std::is_same_v<decltype(std::declval<CString&>().GetBuffer()), wchar*>);
static_assert(std::is_same_v<decltype(std::declval<const CString&>()[0]), wchar>);
static_assert(std::is_same_v<decltype(std::declval<CString&>()[0]), wchar&>);
static_assert(std::is_same_v<decltype(std::declval<const CString&>()[0u]), wchar>);
static_assert(std::is_same_v<decltype(std::declval<CString&>()[0u]), wchar&>);
static_assert(std::is_same_v<decltype(std::declval<const CString&>().Length()), unsigned int>);
static_assert(std::is_same_v<decltype(std::declval<const CString&>().CompareTo("")), int>);
static_assert(std::is_convertible_v<const CString&, const wchar*>);
static_assert(std::is_convertible_v<CString&, wchar*>);
static_assert(!std::is_convertible_v<const CString&, wchar*>);
static_assert(sizeof(CString) == sizeof(wchar*));

TEST(String, DefaultIsEmpty) {
    CString text;
    ASSERT_NE(text.GetBuffer(), nullptr);
    EXPECT_EQ(*text.GetBuffer(), wchar{0});
    EXPECT_EQ(text.Length(), 0u);
}

TEST(String, ConstructedFromWideText) {
    const wchar source[] = {'a', 0x00E9, 0xD83D, 0xDE00, 0xFFFF, 0, 'x', 0};
    const CString text(source);
    EXPECT_EQ(wstring(text.GetBuffer()), wstring(source));
    EXPECT_NE(text.GetBuffer(), source);
    EXPECT_EQ(text.Length(), 5u);
}

TEST(String, NarrowBytesAreWidenedWithTheirSign) {
    for (int byte = 1; byte < 256; ++byte) {
        const char source[] = {static_cast<char>(byte), 0};
        const CString text(source);
        EXPECT_EQ(static_cast<int>(text.GetBuffer()[0]), byte < 0x80 ? byte : 0xFF00 + byte);
        EXPECT_EQ(text.Length(), 1u);
    }
    EXPECT_EQ(Narrow(CString("abc").GetBuffer()), "abc");
    EXPECT_EQ(CString("").Length(), 0u);
}

TEST(String, ConstructedFromOtherText) {
    CString source("abc");
    const CString copy(source);
    EXPECT_NE(copy.GetBuffer(), source.GetBuffer());
    source[0] = 'x';
    EXPECT_EQ(Narrow(copy), "abc");
}

TEST(String, ConstructedFromNull) {
    EXPECT_EQ(CString(static_cast<const char*>(nullptr)).Length(), 0u);
    EXPECT_EQ(CString(static_cast<const wchar*>(nullptr)).Length(), 0u);
}

TEST(String, AssignmentReplacesTheTextAndGivesTheObject) {
    CString text("long enough to be another buffer");
    EXPECT_EQ(&(text = "caf\xE9"), &text);
    EXPECT_EQ(Narrow(text), Narrow(VRL_L("caf\uFFE9")));
    EXPECT_EQ(&(text = VRL_L("wide")), &text);
    EXPECT_EQ(Narrow(text), "wide");
    const CString other("other");
    EXPECT_EQ(&(text = other), &text);
    EXPECT_EQ(Narrow(text), "other");
    EXPECT_NE(text.GetBuffer(), other.GetBuffer());
    EXPECT_EQ(&(text = CString("moved")), &text);
    EXPECT_EQ(Narrow(text), "moved");
    text = static_cast<const char*>(nullptr);
    EXPECT_EQ(text.Length(), 0u);
    text = "again";
    text = static_cast<const wchar*>(nullptr);
    EXPECT_EQ(text.Length(), 0u);
}

TEST(String, AssignmentOfItself) {
    CString text("abcdef");
    const CString& same = text;
    text = same;
    EXPECT_EQ(Narrow(text), "abcdef");
    text = static_cast<const wchar*>(text.GetBuffer());
    EXPECT_EQ(Narrow(text), "abcdef");
    text = static_cast<const wchar*>(text.GetBuffer() + 2);
    EXPECT_EQ(Narrow(text), "cdef");
    text = static_cast<const wchar*>(text.GetBuffer() + text.Length());
    EXPECT_EQ(text.Length(), 0u);
}

TEST(String, ZeroUnitShortensTheText) {
    CString text("abcdef");
    text.GetBuffer()[4] = 0;
    EXPECT_EQ(text.Length(), 4u);
    text[1] = 0;
    EXPECT_EQ(text.Length(), 1u);
    EXPECT_EQ(Narrow(CString(text)), "a");
    text[-1] = 0;
    EXPECT_EQ(text.Length(), 0u);
}

TEST(String, BufferForms) {
    CString text("abc");
    EXPECT_EQ(static_cast<wchar*>(text), text.GetBuffer());
    EXPECT_EQ(static_cast<const wchar*>(Const(text)), Const(text).GetBuffer());
    EXPECT_EQ(text.GetBuffer(), Const(text).GetBuffer());
}

TEST(String, AllocateMakesAnEmptyTextWithRoom) {
    for (const int count : {0, 1, 2, 100, 70000}) {
        CString text("abc");
        text.Allocate(count);
        EXPECT_EQ(text.Length(), 0u);
        for (int i = 0; i < count; ++i) text.GetBuffer()[i] = 'x';
        text.GetBuffer()[count] = 0;
        EXPECT_EQ(text.Length(), static_cast<unsigned int>(count));
    }
}

TEST(String, AllocateOfImpossibleCountsRaisesAndKeepsTheText) {
    CString text("abc");
    for (const int count : {-1, -2, INT_MIN, INT_MIN + 1}) {
        EXPECT_THROW(text.Allocate(count), std::bad_alloc) << count;
        EXPECT_EQ(Narrow(text), "abc");
    }
    // 4 GiB: more than a 32-bit process has room for, so the count itself is refused there.
    if (sizeof(void*) == 4) {
        EXPECT_THROW(text.Allocate(INT_MAX), std::bad_alloc);
        EXPECT_THROW(text.Allocate(INT_MAX / 2 + 1), std::bad_alloc);
        EXPECT_EQ(Narrow(text), "abc");
    }
}

TEST(String, ElementsInRange) {
    CString text("abc");
    const char* const expected = "abc";
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(text[i], expected[i]);
        EXPECT_EQ(text[static_cast<unsigned int>(i)], expected[i]);
        EXPECT_EQ(Const(text)[i], expected[i]);
        EXPECT_EQ(Const(text)[static_cast<unsigned int>(i)], expected[i]);
        EXPECT_EQ(text[i - 3], expected[i]);
        EXPECT_EQ(Const(text)[i - 3], expected[i]);
    }
    EXPECT_EQ(&text[2u], text.GetBuffer() + 2);
    EXPECT_EQ(&text[-1], text.GetBuffer() + 2);
    text[0] = 'x';
    text[1u] = 'y';
    text[-1] = 'z';
    EXPECT_EQ(Narrow(text), "xyz");
}

/// Leaves the cells as they were, because all texts of the program share them.
class StringCells : public testing::Test {
protected:
    ~StringCells() override {
        CString text;
        text[0u] = 0;
        text[0] = 0;
    }
};

TEST_F(StringCells, OutOfRangeElementsAreZeroUntilWritten) {
    CString text("abc");
    for (const unsigned int index : {3u, 4u, 1000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(text[index], wchar{0}) << index;
        EXPECT_EQ(Const(text)[index], wchar{0}) << index;
    }
    for (const int index : {3, 4, 1000, INT_MAX, -4, -5, INT_MIN}) {
        EXPECT_EQ(text[index], wchar{0}) << index;
        EXPECT_EQ(Const(text)[index], wchar{0}) << index;
    }
}

TEST_F(StringCells, EachOverloadHasItsCellAndAllTextsShareIt) {
    CString text("abc");
    CString other("longer text");
    EXPECT_EQ(&text[3u], &other[11u]);
    EXPECT_EQ(&text[3], &other[-12]);
    EXPECT_NE(&text[3u], &text[3]);

    text[3u] = 'u';
    EXPECT_EQ(other[0xFFFFFFFFu], 'u');
    EXPECT_EQ(text[3], wchar{0});
    EXPECT_EQ(Const(text)[3u], wchar{0});
    EXPECT_EQ(Const(text)[3], wchar{0});

    text[-4] = 's';
    EXPECT_EQ(other[99], 's');
    EXPECT_EQ(other[99u], 'u');
    EXPECT_EQ(Const(text)[3u], wchar{0});
    EXPECT_EQ(Const(text)[3], wchar{0});
    EXPECT_EQ(Narrow(text), "abc");
}

TEST_F(StringCells, TheTerminatorIsOutOfRange) {
    CString text("abc");
    text[3] = 'x';
    EXPECT_EQ(text.GetBuffer()[3], wchar{0});
    EXPECT_EQ(text.Length(), 3u);
}

TEST(String, TokensAreNotProvided) {
    for (const wchar separator : {wchar{0}, wchar{' '}, wchar{','}, wchar{0xFFFF}})
        EXPECT_EQ(CString("a b,c").EnumerateTokens(separator), nullptr);
}

struct TCompareRow {
    const char* name;
    wstring left;
    wstring right;
    int order;
    int orderIgnoringCase;
};

class StringCompare : public testing::TestWithParam<TCompareRow> {};

void ExpectOrder(const CString& left, const CString& right, int order, int orderIgnoringCase) {
    const wchar* text = right;
    EXPECT_EQ(left.CompareTo(text), order);
    EXPECT_EQ(left.CompareToIgnoreCase(text), orderIgnoringCase);
    EXPECT_EQ(left == text, order == 0);
    EXPECT_EQ(left != text, order != 0);
    EXPECT_EQ(left < text, order < 0);
    EXPECT_EQ(left <= text, order <= 0);
    EXPECT_EQ(left > text, order > 0);
    EXPECT_EQ(left >= text, order >= 0);
    EXPECT_EQ(left == right, order == 0);
}

/// The narrow overloads, when bytes can replace the units of `right`.
void ExpectNarrowOrder(const CString& left, const wstring& right, int order, int orderIgnoringCase) {
    std::string bytes;
    for (const wchar unit : right) {
        if (unit >= 0x80 && unit < 0xFF80) return;
        bytes += static_cast<char>(unit);
    }
    const char* text = bytes.c_str();
    EXPECT_EQ(left.CompareTo(text), order);
    EXPECT_EQ(left.CompareToIgnoreCase(text), orderIgnoringCase);
    EXPECT_EQ(left == text, order == 0);
    EXPECT_EQ(left != text, order != 0);
    EXPECT_EQ(left < text, order < 0);
    EXPECT_EQ(left <= text, order <= 0);
    EXPECT_EQ(left > text, order > 0);
    EXPECT_EQ(left >= text, order >= 0);
}

TEST_P(StringCompare, AllOperations) {
    const TCompareRow& row = GetParam();
    const CString left(row.left.c_str());
    const CString right(row.right.c_str());
    ExpectOrder(left, right, row.order, row.orderIgnoringCase);
    ExpectOrder(right, left, -row.order, -row.orderIgnoringCase);
    ExpectNarrowOrder(left, row.right, row.order, row.orderIgnoringCase);
    ExpectNarrowOrder(right, row.left, -row.order, -row.orderIgnoringCase);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, StringCompare,
    testing::Values(TCompareRow{"BothEmpty", VRL_L(""), VRL_L(""), 0, 0},
                    TCompareRow{"EmptyIsLeast", VRL_L(""), VRL_L("a"), -1, -1},
                    TCompareRow{"LongerIsGreater", VRL_L("ab"), VRL_L("abc"), -1, -1},
                    TCompareRow{"FirstDifferenceDecides", VRL_L("abd"), VRL_L("abc"), 1, 1},
                    TCompareRow{"DifferenceBeforeLength", VRL_L("b"), VRL_L("abc"), 1, 1},
                    TCompareRow{"Equal", VRL_L("abc"), VRL_L("abc"), 0, 0},
                    TCompareRow{"CaseDiffers", VRL_L("abc"), VRL_L("ABC"), 1, 0},
                    TCompareRow{"CaseDiffersAndLength", VRL_L("abc"), VRL_L("AB"), 1, 1},
                    TCompareRow{"UnderscoreStandsBetweenTheCases", VRL_L("_"), VRL_L("a"), -1, 1},
                    TCompareRow{"UnsignedUnits", VRL_L("\uFFFF"), VRL_L("\u0001"), 1, 1},
                    TCompareRow{"UnsignedUnitsAround8000", VRL_L("\u7FFF"), VRL_L("\u8000"), -1, -1},
                    TCompareRow{"WidenedBytes", VRL_L("\uFFE9"), VRL_L("\uFFE9"), 0, 0},
                    TCompareRow{"WidenedBytesAreGreat", VRL_L("\uFFE9"), VRL_L("z"), 1, 1},
                    // Surrogates are units like all others, below the units from U+E000 on.
                    TCompareRow{"Surrogates", wstring{0xD83D, 0xDE00}, wstring{0xE000}, -1, -1},
                    TCompareRow{"LongEqual", wstring(1000, 'q'), wstring(1000, 'q'), 0, 0},
                    TCompareRow{"LongDiffersLate", wstring(1000, 'q') + VRL_L("a"),
                                wstring(1000, 'q') + VRL_L("b"), -1, -1}),
    [](const auto& row) { return row.param.name; });

TEST(String, BytesAreComparedAsTheyAreWidened) {
    EXPECT_EQ(CString("\xE9").CompareTo("\xE9"), 0);
    EXPECT_EQ(CString(VRL_L("\u00E9")).CompareTo("\xE9"), -1);
    EXPECT_EQ(CString(VRL_L("\uFFE9")).CompareTo("\xE9"), 0);
    EXPECT_EQ(CString("abc").CompareToIgnoreCase("ABC"), 0);
    EXPECT_EQ(CString("\xE9").CompareToIgnoreCase("\xC9"), 1);
}

TEST(String, NullComparesAsEmpty) {
    EXPECT_EQ(CString().CompareTo(static_cast<const char*>(nullptr)), 0);
    EXPECT_EQ(CString().CompareTo(static_cast<const wchar*>(nullptr)), 0);
    EXPECT_EQ(CString("a").CompareTo(static_cast<const char*>(nullptr)), 1);
    EXPECT_EQ(CString("a").CompareToIgnoreCase(static_cast<const char*>(nullptr)), 1);
    EXPECT_EQ(CString("a").CompareToIgnoreCase(static_cast<const wchar*>(nullptr)), 1);
    EXPECT_TRUE(CString() == static_cast<const wchar*>(nullptr));
}

TEST(String, EqualityWithAnotherTextTakesItByValue) {
    const CString left("abc");
    EXPECT_TRUE(left == CString("abc"));
    EXPECT_FALSE(left == CString("abd"));
    EXPECT_TRUE(left == left);
}

TEST(String, Concatenation) {
    const CString left("abc");
    EXPECT_EQ(Narrow(left + "def"), "abcdef");
    EXPECT_EQ(Narrow(left + VRL_L("def")), "abcdef");
    EXPECT_EQ(Narrow(left + CString("def")), "abcdef");
    EXPECT_EQ(Narrow(left + ""), "abc");
    EXPECT_EQ(Narrow(left + VRL_L("")), "abc");
    EXPECT_EQ(Narrow(CString() + "abc"), "abc");
    EXPECT_EQ((CString() + VRL_L("")).Length(), 0u);
    EXPECT_EQ(Narrow(left + "\xE9"), Narrow(VRL_L("abc\uFFE9")));
    EXPECT_EQ(Narrow(left + static_cast<const char*>(nullptr)), "abc");
    EXPECT_EQ(Narrow(left + static_cast<const wchar*>(nullptr)), "abc");
    EXPECT_EQ(Narrow(left), "abc");
}

TEST(String, ConcatenationInPlace) {
    CString text("abc");
    EXPECT_EQ(&(text += "d\xE9"), &text);
    EXPECT_EQ(Narrow(text), Narrow(VRL_L("abcd\uFFE9")));
    EXPECT_EQ(&(text += VRL_L("e")), &text);
    EXPECT_EQ(Narrow(text), Narrow(VRL_L("abcd\uFFE9e")));
    text += static_cast<const char*>(nullptr);
    text += static_cast<const wchar*>(nullptr);
    EXPECT_EQ(text.Length(), 6u);
}

TEST(String, ConcatenationWithItself) {
    CString text("abc");
    text += text;
    EXPECT_EQ(Narrow(text), "abcabc");
    text += static_cast<const wchar*>(text.GetBuffer() + 4);
    EXPECT_EQ(Narrow(text), "abcabcbc");
    text = text + text;
    EXPECT_EQ(Narrow(text), "abcabcbcabcabcbc");
}

TEST(String, ToWideCharCopiesWhatFits) {
    const CString text("abcdef");
    for (int size = 1; size < 12; ++size) {
        wstring room(16, '#');
        text.ToWideChar(room.data(), size);
        const auto copied = static_cast<std::size_t>(std::min(6, size - 1));
        wstring expected = wstring(VRL_L("abcdef")).substr(0, copied) + wchar{0};
        expected.resize(16, '#');
        EXPECT_EQ(Narrow(room), Narrow(expected)) << size;
    }
}

TEST(String, ToCharTakesTheLowBytes) {
    const CString text("abcdef");
    for (int size = 1; size < 12; ++size) {
        std::string room(16, '#');
        text.ToChar(room.data(), size);
        const auto copied = static_cast<std::size_t>(std::min(6, size - 1));
        std::string expected = std::string("abcdef").substr(0, copied) + '\0';
        expected.resize(16, '#');
        EXPECT_EQ(room, expected) << size;
    }
    char room[8];
    CString(wstring{0x00E9, 0xFFE9, 0x0141, 0xD83D}.c_str()).ToChar(room, 8);
    EXPECT_EQ(std::string(room), "\xE9\xE9\x41\x3D");
    // A low byte of 0 ends what a reader of narrow text sees, and nothing else.
    CString(VRL_L("a\u0100b")).ToChar(room, 8);
    EXPECT_EQ(std::memcmp(room, "a\0b", 4), 0);
}

TEST(String, CopyingOutToNoRoomWritesNothing) {
    const CString text("abcdef");
    for (const int size : {0, -1, INT_MIN}) {
        wchar wide[] = {'#', 0};
        text.ToWideChar(wide, size);
        EXPECT_EQ(wide[0], '#');
        char narrow[] = "#";
        text.ToChar(narrow, size);
        EXPECT_EQ(narrow[0], '#');
        text.ToWideChar(nullptr, size);
        text.ToChar(nullptr, size);
    }
}

TEST(String, CopyingOutIntoItself) {
    CString text("abcdef");
    text.ToWideChar(text.GetBuffer() + 2, 5);
    EXPECT_EQ(Narrow(text), "ababcd");
}

} // namespace
