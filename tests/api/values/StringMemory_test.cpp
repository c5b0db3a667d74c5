// How much memory texts take.
#include "api/values/StringChanges.h"
#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <string>

namespace vorlund::test {
namespace {

TEST(StringMemory, NothingIsLeftBehind) {
    for (const TStringChange& change : kStringChanges) {
        SCOPED_TRACE(change.name);
        const CMemoryWatch watch;
        {
            CString text("aaabcaaaabcaabb");
            Apply(change, text);
            EXPECT_EQ(watch.GetLiveBlocks(), 1);
        }
        EXPECT_EQ(watch.GetLiveBlocks(), 0);
    }
}

TEST(StringMemory, SearchAndComparisonNeedNoMemory) {
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

TEST(StringMemory, ConcatenationTakesOneAllocation) {
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
} // namespace vorlund::test
