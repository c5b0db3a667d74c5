#include "vorlund/api/text/StackArena.h"

#include "vorlund/api/text/Utf8.h"

#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <string>

namespace vorlund::test {
namespace {

TEST(StackArenaMemory, LongestMessageNeedsNoHeap) {
    const wstring text(1023, VRL_L('\u65E5'));
    const CAllocationCount count;
    CStackArena arena;
    std::pmr::string out = ReserveString(arena, 3 * 1023 + 1);
    AppendUtf8(out, text.c_str());
    EXPECT_EQ(count.Get(), 0u);
    EXPECT_EQ(out.size(), 3u * 1023);
}

} // namespace
} // namespace vorlund::test
