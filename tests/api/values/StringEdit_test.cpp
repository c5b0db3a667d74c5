/// Ranges, trimming, replacement and removal: tables of results and failures.
#include <vorlund/Exception.h>
#include <vorlund/String.h>

#include "support/Failures.h"
#include "support/Outcome.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>

namespace {

using vorlund::CInvalidParameterException;
using vorlund::CObjectNotFoundException;
using vorlund::CString;
using vorlund::TFailure;
using vorlund::wchar;
using vorlund::wstring;
using vorlund::test::ExpectRaises;
using vorlund::test::Narrow;
using vorlund::test::Outcome;

constexpr const wchar* kFile = VRL_L("src/vorlund/api/String");
constexpr const wchar* kFirst = VRL_L("vorlund::CString::FindFirst");
constexpr const wchar* kNotFound = VRL_L("Didn't find content");
constexpr TFailure kUnitGone{kFirst, kFile, 141, kNotFound};
constexpr TFailure kWideGone{kFirst, kFile, 155, kNotFound};
constexpr TFailure kNarrowTooLong{kFirst, kFile, 163, kNotFound};
constexpr TFailure kNarrowGone{kFirst, kFile, 169, kNotFound};

constexpr const wchar* kReplace = VRL_L("vorlund::CString::Replace");
constexpr const wchar* kRemove = VRL_L("vorlund::CString::Remove");
constexpr TFailure kReplaceEmpty{kReplace, kFile, 216, VRL_L("Empty search text")};
constexpr TFailure kReplaceEndless{kReplace, kFile, 220, VRL_L("Replacement has no end in sight")};
constexpr TFailure kRemoveTerminator{kRemove, kFile, 228, VRL_L("Cannot remove the terminator")};
constexpr TFailure kRemoveEmptyWide{kRemove, kFile, 236, VRL_L("Empty search text")};
constexpr TFailure kRemoveEmptyNarrow{kRemove, kFile, 244, VRL_L("Empty search text")};

struct TRangeRow {
    const char* text;
    int start;
    int count;
    const char* range;
    const char* rest;
};

constexpr TRangeRow kRanges[] = {
    {"abcdef", 0, 6, "abcdef", ""},
    {"abcdef", 0, 0, "", "abcdef"},
    {"abcdef", 0, 1, "a", "bcdef"},
    {"abcdef", 5, 1, "f", "abcde"},
    {"abcdef", 1, 2, "bc", "adef"},
    {"abcdef", 2, 0, "", "abcdef"},
    {"abcdef", 2, 100, "cdef", "ab"},
    {"abcdef", 2, INT_MAX, "cdef", "ab"},
    {"abcdef", 6, 1, "", "abcdef"},
    {"abcdef", 10, 1, "", "abcdef"},
    {"abcdef", 10, -1, "", "abcdef"},
    {"abcdef", INT_MAX, INT_MAX, "", "abcdef"},
    {"abcdef", INT_MAX, INT_MIN, "", "abcdef"},
    // A negative start counts from the end.
    {"abcdef", -3, 2, "de", "abcf"},
    {"abcdef", -2, 5, "ef", "abcd"},
    {"abcdef", -6, 2, "ab", "cdef"},
    {"abcdef", -7, 2, "ab", "cdef"},
    {"abcdef", INT_MIN, 2, "ab", "cdef"},
    {"abcdef", INT_MIN, INT_MAX, "abcdef", ""},
    // A negative count leaves that many units off the end.
    {"abcdef", 2, -1, "cde", "abf"},
    {"abcdef", 0, -5, "a", "bcdef"},
    {"abcdef", 2, -4, "", "abcdef"},
    {"abcdef", 2, -5, "", "abcdef"},
    {"abcdef", 2, INT_MIN, "", "abcdef"},
    {"abcdef", -3, -1, "de", "abcf"},
    {"abcdef", -3, -3, "", "abcdef"},
    {"abcdef", -1, -1, "", "abcdef"},
    {"abcdef", INT_MIN, INT_MIN, "", "abcdef"},
    {"", 0, 0, "", ""},
    {"", 0, 1, "", ""},
    {"", -1, 1, "", ""},
    {"", 0, -1, "", ""},
    {"", INT_MIN, INT_MIN, "", ""},
};

TEST(StringEdit, Ranges) {
    for (const TRangeRow& row : kRanges) {
        SCOPED_TRACE(std::string(row.text) + ' ' + std::to_string(row.start) + ' ' +
                     std::to_string(row.count));
        CString text(row.text);
        const CString& same = text;
        EXPECT_EQ(Narrow(same.SubStr(row.start, row.count)), row.range);
        EXPECT_EQ(Narrow(text), row.text);
        text.Remove(row.start, row.count);
        EXPECT_EQ(Narrow(text), row.rest);
    }
}

TEST(StringEdit, AnEmptyRangeLeavesTheBuffer) {
    CString text("abc");
    const wchar* buffer = text.GetBuffer();
    text.Remove(1, 0);
    EXPECT_EQ(text.GetBuffer(), buffer);
}

TEST(StringEdit, RemovedRangeKeeps65535UnitsBehindIt) {
    for (const std::size_t tail : {65534u, 65535u, 65536u, 200000u}) {
        CString text((wstring(100000, 'a') + wstring(5, 'x') + wstring(tail, 'b')).c_str());
        text.Remove(100000, 5);
        EXPECT_EQ(wstring(text), wstring(100000, 'a') + wstring(std::min<std::size_t>(tail, 65535), 'b'));
    }
}

TEST(StringEdit, SubStrKeepsEverything) {
    const wstring content(200000, 'a');
    EXPECT_EQ(wstring(CString(content.c_str()).SubStr(0, 200000)), content);
    EXPECT_EQ(CString(content.c_str()).SubStr(-150000, INT_MAX).Length(), 150000u);
}

struct TTrimRow {
    wstring text;
    wstring trimmed;
};

TEST(StringEdit, Trim) {
    const TTrimRow rows[] = {
        {VRL_L(""), VRL_L("")},
        {VRL_L("a"), VRL_L("a")},
        {VRL_L(" a"), VRL_L("a")},
        {VRL_L("a "), VRL_L("a")},
        {VRL_L(" \r\n a b \r\n "), VRL_L("a b")},
        {VRL_L("\t a \r\n"), VRL_L("\t a")},
        {VRL_L(" \t "), VRL_L("\t")},
        {VRL_L("   "), VRL_L("")},
        {VRL_L("\n"), VRL_L("")},
        {VRL_L("\r\n\r\n"), VRL_L("")},
        // Other blanks, and units whose low byte is one of the three, stay.
        {VRL_L("\v\fa\u00A0"), VRL_L("\v\fa\u00A0")},
        {VRL_L("\u2020\u0A0D\u200A"), VRL_L("\u2020\u0A0D\u200A")},
    };
    for (const TTrimRow& row : rows) {
        CString text(row.text.c_str());
        const wchar* buffer = text.GetBuffer();
        text.Trim();
        EXPECT_EQ(Narrow(text), Narrow(row.trimmed));
        EXPECT_EQ(text.GetBuffer(), buffer) << "the buffer stays";
    }
}

TEST(StringEdit, ReplaceUnit) {
    CString text("banana");
    const wchar* buffer = text.GetBuffer();
    text.Replace(wchar{'a'}, wchar{'o'});
    EXPECT_EQ(Narrow(text), "bonono");
    text.Replace(wchar{'x'}, wchar{'y'});
    EXPECT_EQ(Narrow(text), "bonono");
    text.Replace(wchar{'o'}, wchar{'o'});
    EXPECT_EQ(Narrow(text), "bonono");
    text.Replace(wchar{'n'}, wchar{0xFFFF});
    EXPECT_EQ(Narrow(text), Narrow(VRL_L("bo\uFFFFo\uFFFFo")));
    EXPECT_EQ(text.GetBuffer(), buffer);
    // The terminator is no unit of the text.
    text.Replace(wchar{0}, wchar{'x'});
    EXPECT_EQ(text.Length(), 6u);
    text.Replace(wchar{'o'}, wchar{0});
    EXPECT_EQ(Narrow(text), "b");
}

struct TReplaceRow {
    const char* text;
    const char* from;
    const char* to;
    const char* result;
    /// Whether the call returns because the needle has become longer than the text.
    bool returns;
};

constexpr TReplaceRow kReplaceRows[] = {
    // Plain replacement, left to right.
    {"abcabc", "b", "x", "axcaxc", false},
    {"abcabc", "bc", "xyz", "axyzaxyz", false},
    {"abcabc", "abc", "x", "xx", true},
    {"abcabcabc", "abc", "x", "xxx", false},
    {"abc", "abc", "x", "x", true},
    {"abc", "abc", "xyz", "xyz", false},
    {"abc", "abc", "", "", true},
    {"aaaa", "aa", "x", "xx", false},
    {"aaaaa", "aa", "x", "xxa", false},
    {"a-b-c", "-", "--->", nullptr, false},
    {"a-b-c", "-", "+++", "a+++b+++c", false},
    // Nothing there.
    {"abc", "x", "y", "abc", false},
    {"abc", "abcd", "y", "abc", true},
    {"", "a", "b", "", true},
    // An edit completes an occurrence that began before it.
    {"aab", "ab", "b", "b", true},
    {"aaab", "ab", "b", "b", true},
    {"aaabc", "ab", "b", "bc", false},
    {"aabb", "ab", "", "", true},
    {"abcabcc", "abc", "", "c", true},
    {"aabcbc", "abc", "", "", true},
    {"aabaabcbcabc", "abc", "", "aab", false},
    {"aaaaaaaa", "aa", "a", "a", true},
    {"a     b", "  ", " ", "a b", false},
    {"abab", "aba", "b", "bb", true},
    {"ababa", "aba", "a", "a", true},
    {"xabcy", "abc", "ab", "xaby", false},
    {"xabccy", "abc", "ab", "xaby", false},
    // Both sides of the replacement take part.
    {"abxcd", "x", "", "abcd", false},
    {"axbcbx", "bc", "x", "axxbx", false},
    {"aabbab", "ab", "ba", "bbbaaa", false},
    {"abb", "ab", "bba", "bbbba", false},
    {"aab", "ab", "bba", "bbbbaa", false},
    // A replacement that holds the needle is harmless while there is nothing to replace.
    {"xyz", "a", "aa", "xyz", false},
    {"xyz", "abcd", "abcde", "xyz", true},
};

TEST(StringEdit, ReplaceText) {
    for (const TReplaceRow& row : kReplaceRows) {
        SCOPED_TRACE(std::string(row.text) + ": " + row.from + " by " + row.to);
        CString text(row.text);
        const CString from(row.from);
        const CString to(row.to);
        const auto act = [&] { text.Replace(from.GetBuffer(), to.GetBuffer()); };
        if (!row.result) {
            ExpectRaises<CInvalidParameterException>(kReplaceEndless, act);
            EXPECT_EQ(Narrow(text), row.text);
            continue;
        }
        if (row.returns)
            EXPECT_EQ(Outcome(act), "nothing");
        else
            ExpectRaises<CObjectNotFoundException>(kWideGone, act);
        EXPECT_EQ(Narrow(text), row.result);
    }
}

TEST(StringEdit, ReplaceTextAsOftenAsItIsThere) {
    // Around the numbers that are replaced at a time.
    for (const int count : {511, 512, 513, 1024, 5000}) {
        std::string text;
        std::string replaced;
        for (int i = 0; i < count; ++i) {
            text += "ab ";
            replaced += "xyz ";
        }
        CString edited(text.c_str());
        ExpectRaises<CObjectNotFoundException>(kWideGone, [&] { edited.Replace(VRL_L("ab"), VRL_L("xyz")); });
        EXPECT_EQ(Narrow(edited), replaced) << count;
    }
}

TEST(StringEdit, ReplaceByNullRemoves) {
    CString text("abcb");
    ExpectRaises<CObjectNotFoundException>(kWideGone, [&] { text.Replace(VRL_L("b"), nullptr); });
    EXPECT_EQ(Narrow(text), "ac");
}

struct TRemoveRow {
    const char* text;
    const char* removed;
    const char* result;
    const TFailure* wideEnd;
    const TFailure* narrowEnd;
};

constexpr TRemoveRow kRemoveRows[] = {
    {"axb", "x", "ab", &kWideGone, &kNarrowGone},     {"xx", "x", "", nullptr, &kNarrowTooLong},
    {"x", "x", "", nullptr, &kNarrowTooLong},         {"", "x", "", nullptr, &kNarrowTooLong},
    {"abc", "x", "abc", &kWideGone, &kNarrowGone},    {"abcabc", "bc", "aa", &kWideGone, &kNarrowGone},
    {"abcabc", "abc", "", nullptr, &kNarrowTooLong},  {"aabbc", "ab", "c", nullptr, &kNarrowTooLong},
    {"aabbcc", "ab", "cc", &kWideGone, &kNarrowGone}, {"ab", "abc", "ab", nullptr, &kNarrowTooLong},
    {"aXbX", "X", "ab", &kWideGone, &kNarrowGone},    {"a\xE9z\xE9", "\xE9", "az", &kWideGone, &kNarrowGone},
};

/// Runs `act`, which edits `text`, and compares the ending and the text.
template <class TAct> void ExpectEdit(CString& text, const char* result, const TFailure* end, TAct&& act) {
    if (end)
        ExpectRaises<CObjectNotFoundException>(*end, act);
    else
        EXPECT_EQ(Outcome(act), "nothing");
    EXPECT_EQ(Narrow(text), Narrow(CString(result)));
}

TEST(StringEdit, RemoveInPlace) {
    for (const TRemoveRow& row : kRemoveRows) {
        SCOPED_TRACE(std::string(row.text) + " minus " + row.removed);
        const CString wide(row.removed);
        CString text(row.text);
        ExpectEdit(text, row.result, row.wideEnd, [&] { text.Remove(wide.GetBuffer()); });
        text = row.text;
        ExpectEdit(text, row.result, row.narrowEnd, [&] { text.Remove(row.removed); });
        text = row.text;
        ExpectEdit(text, row.result, row.wideEnd, [&] { EXPECT_EQ(&(text -= wide.GetBuffer()), &text); });
        text = row.text;
        ExpectEdit(text, row.result, row.narrowEnd, [&] { text -= row.removed; });
        if (wide.Length() != 1) continue;
        text = row.text;
        ExpectEdit(text, row.result, &kUnitGone, [&] { text.Remove(wide[0]); });
    }
}

TEST(StringEdit, DifferenceGivesACopyOrRaises) {
    for (const TRemoveRow& row : kRemoveRows) {
        SCOPED_TRACE(std::string(row.text) + " minus " + row.removed);
        const CString wide(row.removed);
        CString text(row.text);
        CString result("not assigned");
        ExpectEdit(text, row.text, row.wideEnd, [&] { result = text - wide.GetBuffer(); });
        EXPECT_EQ(Narrow(result), row.wideEnd ? "not assigned" : row.result);
        ExpectEdit(text, row.text, row.narrowEnd, [&] { result = text - row.removed; });
    }
}

TEST(StringEdit, CallsThatNeverEndAreRefusedBeforeTheyEdit) {
    for (const char* content : {"", "abc"}) {
        CString text(content);
        const auto replace = [&](const wchar* from) { text.Replace(from, VRL_L("x")); };
        ExpectRaises<CInvalidParameterException>(kReplaceEmpty, [&] { replace(VRL_L("")); });
        ExpectRaises<CInvalidParameterException>(kReplaceEmpty, [&] { replace(nullptr); });
        ExpectRaises<CInvalidParameterException>(kReplaceEmpty, [&] { text.Replace(VRL_L(""), VRL_L("")); });
        ExpectRaises<CInvalidParameterException>(kRemoveTerminator, [&] { text.Remove(wchar{0}); });
        const wchar* wide = nullptr;
        const char* narrow = nullptr;
        ExpectRaises<CInvalidParameterException>(kRemoveEmptyWide, [&] { text.Remove(VRL_L("")); });
        ExpectRaises<CInvalidParameterException>(kRemoveEmptyWide, [&] { text.Remove(wide); });
        ExpectRaises<CInvalidParameterException>(kRemoveEmptyWide, [&] { text -= VRL_L(""); });
        ExpectRaises<CInvalidParameterException>(kRemoveEmptyWide, [&] { text - VRL_L(""); });
        ExpectRaises<CInvalidParameterException>(kRemoveEmptyNarrow, [&] { text.Remove(""); });
        ExpectRaises<CInvalidParameterException>(kRemoveEmptyNarrow, [&] { text.Remove(narrow); });
        ExpectRaises<CInvalidParameterException>(kRemoveEmptyNarrow, [&] { text -= ""; });
        ExpectRaises<CInvalidParameterException>(kRemoveEmptyNarrow, [&] { text - ""; });
        EXPECT_EQ(Narrow(text), content);
    }
}

TEST(StringEdit, ReplacementsThatHoldTheNeedleAreRefused) {
    const std::pair<const wchar*, const wchar*> rows[] = {
        {VRL_L("b"), VRL_L("b")},   {VRL_L("b"), VRL_L("bb")},   {VRL_L("b"), VRL_L("xbx")},
        {VRL_L("bc"), VRL_L("bc")}, {VRL_L("bc"), VRL_L("bbc")}, {VRL_L("abc"), VRL_L("xxabc")},
    };
    for (const auto& [from, to] : rows) {
        CString text("abcd");
        const wchar* buffer = text.GetBuffer();
        ExpectRaises<CInvalidParameterException>(kReplaceEndless, [&] { text.Replace(from, to); });
        EXPECT_EQ(Narrow(text), "abcd");
        EXPECT_EQ(text.GetBuffer(), buffer);
    }
}

// These replacements do not hold the needle, but each edit makes a new occurrence out of what is around
// it.
TEST(StringEdit, EditsWithoutAnEndAreGivenUp) {
    struct TRow {
        wstring text;
        const wchar* from;
        const wchar* to;
    };
    const TRow rows[] = {
        // "aab" gives "abbaa", and that "bb", "aab" and "aa".
        {VRL_L("aab"), VRL_L("ab"), VRL_L("bbaa")},
        {VRL_L("aaaab"), VRL_L("aab"), VRL_L("abbaa")},
        {wstring(100000, 'x') + VRL_L("abaa") + wstring(100000, 'x'), VRL_L("aba"), VRL_L("baab")},
        // Ends in theory, but every further a doubles the number of edits.
        {wstring(64, 'a') + VRL_L("b"), VRL_L("ab"), VRL_L("bba")},
        {VRL_L("a") + wstring(3000, 'b') + wstring(64, 'a'), VRL_L("ba"), VRL_L("aab")},
    };
    for (const TRow& row : rows) {
        CString text(row.text.c_str());
        ExpectRaises<CInvalidParameterException>(kReplaceEndless, [&] { text.Replace(row.from, row.to); });
        EXPECT_EQ(wstring(text), row.text);
    }
}

} // namespace
