/// `FindFirst` and `FindLast`, their answers and their failures.
#include <vorlund/Exception.h>
#include <vorlund/String.h>

#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using vorlund::CObjectNotFoundException;
using vorlund::CString;
using vorlund::TFailure;
using vorlund::wchar;
using vorlund::wstring;
using vorlund::test::ExpectRaises;

constexpr const wchar* kFile = VRL_L("src/vorlund/api/String");
constexpr const wchar* kReason = VRL_L("Didn't find content");
constexpr TFailure kFirstUnit{VRL_L("vorlund::CString::FindFirst"), kFile, 141, kReason};
constexpr TFailure kFirstWide{VRL_L("vorlund::CString::FindFirst"), kFile, 155, kReason};
constexpr TFailure kFirstNarrowTooLong{VRL_L("vorlund::CString::FindFirst"), kFile, 163, kReason};
constexpr TFailure kFirstNarrow{VRL_L("vorlund::CString::FindFirst"), kFile, 169, kReason};
constexpr TFailure kLastUnit{VRL_L("vorlund::CString::FindLast"), kFile, 178, kReason};
constexpr TFailure kLastWide{VRL_L("vorlund::CString::FindLast"), kFile, 192, kReason};
constexpr TFailure kLastNarrow{VRL_L("vorlund::CString::FindLast"), kFile, 206, kReason};

constexpr unsigned int kTooLong = 0xFFFFFFFF;
/// Stands in the table for a search that raises.
constexpr unsigned int kRaises = 0xFFFFFFFE;

struct TSearchRow {
    const char* name;
    std::string text;
    std::string needle;
    unsigned int first;
    unsigned int last;
};

class StringSearch : public testing::TestWithParam<TSearchRow> {};

wstring Widen(const std::string& text) {
    return CString(text.c_str()).GetBuffer();
}

TEST_P(StringSearch, Wide) {
    const TSearchRow& row = GetParam();
    const CString text(row.text.c_str());
    const wstring needle = Widen(row.needle);
    if (row.first == kRaises)
        ExpectRaises<CObjectNotFoundException>(kFirstWide, [&] { text.FindFirst(needle.c_str()); });
    else
        EXPECT_EQ(text.FindFirst(needle.c_str()), row.first);
    if (row.last == kRaises)
        ExpectRaises<CObjectNotFoundException>(kLastWide, [&] { text.FindLast(needle.c_str()); });
    else
        EXPECT_EQ(text.FindLast(needle.c_str()), row.last);
}

TEST_P(StringSearch, Narrow) {
    const TSearchRow& row = GetParam();
    const CString text(row.text.c_str());
    const char* needle = row.needle.c_str();
    if (row.first == kTooLong)
        // Only this overload raises where the others answer.
        ExpectRaises<CObjectNotFoundException>(kFirstNarrowTooLong, [&] { text.FindFirst(needle); });
    else if (row.first == kRaises)
        ExpectRaises<CObjectNotFoundException>(kFirstNarrow, [&] { text.FindFirst(needle); });
    else
        EXPECT_EQ(text.FindFirst(needle), row.first);
    if (row.last == kRaises)
        ExpectRaises<CObjectNotFoundException>(kLastNarrow, [&] { text.FindLast(needle); });
    else
        EXPECT_EQ(text.FindLast(needle), row.last);
}

TEST_P(StringSearch, Unit) {
    const TSearchRow& row = GetParam();
    if (row.needle.size() != 1) return;
    const CString text(row.text.c_str());
    const wchar unit = Widen(row.needle)[0];
    // A unit is never longer than the text.
    if (row.first >= kRaises) {
        ExpectRaises<CObjectNotFoundException>(kFirstUnit, [&] { text.FindFirst(unit); });
        ExpectRaises<CObjectNotFoundException>(kLastUnit, [&] { text.FindLast(unit); });
        return;
    }
    EXPECT_EQ(text.FindFirst(unit), row.first);
    EXPECT_EQ(text.FindLast(unit), row.last);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, StringSearch,
    testing::Values(TSearchRow{"Unit", "abcabc", "b", 1, 4}, TSearchRow{"UnitAtEnds", "abca", "a", 0, 3},
                    TSearchRow{"NoSuchUnit", "abc", "x", kRaises, kRaises},
                    TSearchRow{"UnitInEmptyText", "", "x", kTooLong, kTooLong},
                    TSearchRow{"WidenedUnit", "a\xE9z\xE9", "\xE9", 1, 3},
                    TSearchRow{"Part", "abcabc", "bc", 1, 4}, TSearchRow{"Whole", "abc", "abc", 0, 0},
                    TSearchRow{"Overlapping", "aaaa", "aa", 0, 2},
                    TSearchRow{"AlmostThere", "ababac", "abac", 2, 2},
                    TSearchRow{"NoSuchPart", "abcabc", "bb", kRaises, kRaises},
                    TSearchRow{"EqualLengthButOther", "abc", "abd", kRaises, kRaises},
                    TSearchRow{"NeedleTooLong", "abc", "abcd", kTooLong, kTooLong},
                    TSearchRow{"NeedleInEmptyText", "", "ab", kTooLong, kTooLong},
                    TSearchRow{"EmptyNeedle", "abc", "", 0, 3}, TSearchRow{"BothEmpty", "", "", 0, 0},
                    TSearchRow{"WidenedPart", "x\xE9\xFFy", "\xE9\xFF", 1, 1},
                    TSearchRow{"Late", std::string(5000, 'a') + "b" + std::string(7, 'a'), "ab", 4999, 4999},
                    TSearchRow{"LongNeedle", std::string(300, 'a') + "b", std::string(200, 'a') + "b", 100,
                               100},
                    TSearchRow{"LongNeedleIsNotThere", std::string(300, 'a'), std::string(200, 'a') + "b",
                               kRaises, kRaises}),
    [](const auto& row) { return row.param.name; });

TEST(StringSearch, UnitZeroIsTheTerminator) {
    for (const char* content : {"", "a", "abcdefghijklmnopqrstuvwxyz"}) {
        const CString text(content);
        EXPECT_EQ(text.FindFirst(wchar{0}), text.Length());
        EXPECT_EQ(text.FindLast(wchar{0}), text.Length());
    }
}

TEST(StringSearch, UnitsAreNotBytes) {
    const CString text(VRL_L("a\u00E9"));
    ExpectRaises<CObjectNotFoundException>(kFirstNarrow, [&] { text.FindFirst("\xE9"); });
    EXPECT_EQ(text.FindFirst(wchar{0x00E9}), 1u);
    // U+6161 holds the bytes of two letters.
    ExpectRaises<CObjectNotFoundException>(kFirstUnit,
                                           [] { CString(VRL_L("\u6161")).FindFirst(wchar{'a'}); });
}

TEST(StringSearch, NullNeedlesAreEmpty) {
    const CString text("abc");
    EXPECT_EQ(text.FindFirst(static_cast<const wchar*>(nullptr)), 0u);
    EXPECT_EQ(text.FindFirst(static_cast<const char*>(nullptr)), 0u);
    EXPECT_EQ(text.FindLast(static_cast<const wchar*>(nullptr)), 3u);
    EXPECT_EQ(text.FindLast(static_cast<const char*>(nullptr)), 3u);
}

TEST(StringSearch, NeedlesMayBePartsOfTheText) {
    CString text("abcab");
    EXPECT_EQ(text.FindFirst(text.GetBuffer() + 3), 0u);
    EXPECT_EQ(text.FindLast(text.GetBuffer() + 3), 3u);
    EXPECT_EQ(text.FindFirst(text.GetBuffer()), 0u);
}

TEST(StringSearch, FailuresAreReportedOnce) {
    const vorlund::test::CDebugRecorder recorder;
    ExpectRaises<CObjectNotFoundException>(kFirstUnit, [&] { CString("abc").FindFirst(wchar{'x'}); });
    const auto texts = recorder.GetTexts(vorlund::DEBUG_MESSAGE_OUTPUT);
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_EQ(texts[0], "Exception: type=CObjectNotFoundException | method=vorlund::CString::FindFirst | "
                        "file=src/vorlund/api/String | line=141 | reason=Didn't find content");
    EXPECT_EQ(CString("abc").FindFirst(VRL_L("abcd")), kTooLong);
    EXPECT_EQ(recorder.GetEntries().size(), 1u);
}

} // namespace
