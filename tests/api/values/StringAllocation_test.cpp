/// What a refused allocation leaves behind, and how much memory texts take.
#include <vorlund/Exception.h>
#include <vorlund/String.h>

#include "support/Allocations.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>

namespace {

using vorlund::CString;
using vorlund::wchar;
using vorlund::wstring;
using vorlund::test::CAllocationCount;
using vorlund::test::CAllocationFailure;
using vorlund::test::CMemoryWatch;
using vorlund::test::Narrow;

struct TRow {
    const char* name;
    std::function<void(CString&)> act;
};

const std::string kLongBytes(200, 'n');

const TRow kChanges[] = {
    {"assign narrow", [](CString& text) { text = "another text"; }},
    {"assign wide", [](CString& text) { text = VRL_L("another text"); }},
    {"assign text", [](CString& text) { text = CString("another text"); }},
    {"assign a part of itself",
     [](CString& text) { text = static_cast<const wchar*>(text.GetBuffer() + 2); }},
    {"append narrow", [](CString& text) { text += "more"; }},
    {"append wide", [](CString& text) { text += VRL_L("more"); }},
    {"append itself", [](CString& text) { text += text; }},
    {"allocate", [](CString& text) { text.Allocate(100); }},
    {"remove a range", [](CString& text) { text.Remove(1, 2); }},
    {"replace by longer", [](CString& text) { text.Replace(VRL_L("b"), VRL_L("xyz")); }},
    {"replace by shorter", [](CString& text) { text.Replace(VRL_L("bc"), VRL_L("x")); }},
    {"replace reaching back", [](CString& text) { text.Replace(VRL_L("ab"), VRL_L("b")); }},
    {"replace growing", [](CString& text) { text.Replace(VRL_L("ab"), VRL_L("bba")); }},
    {"remove a unit", [](CString& text) { text.Remove(wchar{'b'}); }},
    {"remove wide", [](CString& text) { text.Remove(VRL_L("ab")); }},
    {"remove narrow", [](CString& text) { text.Remove("ab"); }},
    {"remove long narrow", [](CString& text) { text.Remove(kLongBytes.c_str()); }},
    {"minus and assign", [](CString& text) { text -= VRL_L("ab"); }},
};

TEST(StringAllocation, RefusedAllocationsLeaveTheTextWhole) {
    for (const TRow& row : kChanges) {
        for (std::size_t successes = 0;; ++successes) {
            SCOPED_TRACE(std::string(row.name) + ", allocation " + std::to_string(successes));
            CString text("aaabcaaaabcaabb");
            const wchar* const buffer = text.GetBuffer();
            const CAllocationFailure failure(successes);
            bool isRefused = false;
            try {
                row.act(text);
            } catch (const std::bad_alloc&) {
                isRefused = true;
            } catch (const vorlund::CException&) {
            }
            ASSERT_EQ(isRefused, failure.HasFailed());
            if (!isRefused) break;
            EXPECT_EQ(text.GetBuffer(), buffer);
            EXPECT_EQ(Narrow(text), "aaabcaaaabcaabb");
        }
    }
}

TEST(StringAllocation, RefusedConstructionsLeaveNothing) {
    const CString source("source");
    const std::function<void()> rows[] = {
        [] { CString(); },
        [] { CString("narrow"); },
        [] { CString(VRL_L("wide")); },
        [&] { CString copy(source); },
        [&] { source + "narrow"; },
        [&] { source + VRL_L("wide"); },
        [&] { source.SubStr(1, 2); },
        [&] { source - VRL_L("our"); },
    };
    for (const auto& row : rows) {
        const CMemoryWatch watch;
        {
            const CAllocationFailure failure(0);
            EXPECT_THROW(row(), std::bad_alloc);
        }
        EXPECT_EQ(watch.GetLiveBlocks(), 0);
    }
}

TEST(StringAllocation, NothingIsLeftBehind) {
    for (const TRow& row : kChanges) {
        SCOPED_TRACE(row.name);
        const CMemoryWatch watch;
        {
            CString text("aaabcaaaabcaabb");
            try {
                row.act(text);
            } catch (const vorlund::CException&) {
            }
            EXPECT_EQ(watch.GetLiveBlocks(), 1);
        }
        EXPECT_EQ(watch.GetLiveBlocks(), 0);
    }
}

TEST(StringAllocation, SearchAndComparisonNeedNoMemory) {
    const CString text((wstring(5000, 'a') + VRL_L("b")).c_str());
    const wstring wide(300, 'a');
    const std::string narrow(100, 'a');
    const CAllocationCount count;
    EXPECT_EQ(text.FindFirst(wchar{'b'}), 5000u);
    EXPECT_EQ(text.FindLast(wide.c_str()), 4700u);
    EXPECT_EQ(text.FindFirst(narrow.c_str()), 0u);
    EXPECT_EQ(text.CompareTo(wide.c_str()), 1);
    EXPECT_EQ(text.CompareToIgnoreCase(narrow.c_str()), 1);
    EXPECT_EQ(text.Length(), 5001u);
    EXPECT_EQ(count.Get(), 0u);
}

TEST(StringAllocation, ConcatenationTakesOneAllocation) {
    const CString left("left");
    const CAllocationCount count;
    {
        const CString sum = left + VRL_L("right");
        EXPECT_EQ(count.Get(), 1u);
        const CString other = left + "right";
        EXPECT_EQ(count.Get(), 2u);
    }
}

} // namespace
