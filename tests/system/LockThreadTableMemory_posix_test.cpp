// The memory that a table takes from malloc, which no watch of `operator new` sees.
#include "vorlund/system/LockThreadTable.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <malloc.h>

namespace vorlund::test {
namespace {

/// Bytes that malloc has given out and not got back. Always 0 under AddressSanitizer, which sees leaks
/// itself.
std::size_t UsedBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

TEST(LockThreadTableMemory, GivesBackItsBlocks) {
    const std::size_t before = UsedBytes();
    for (int i = 0; i < 100; ++i) {
        CLockThreadTable table;
        for (unsigned int thread = 1; thread <= 500; ++thread) table.Insert(thread);
    }
    // Other threads may hold some more than before, but not what a hundred tables take.
    EXPECT_LT(UsedBytes(), before + 100 * 500 * sizeof(CLockThreadEntry) / 2);
}

} // namespace
} // namespace vorlund::test
