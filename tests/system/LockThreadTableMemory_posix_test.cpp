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

TEST(LockThreadTableMemory, GivesBackTheModesOfWhoStillHolds) {
    constexpr int kTables = 100;
    constexpr unsigned int kThreads = 500;
    constexpr int kModes = 50;
    const std::size_t before = UsedBytes();
    for (int i = 0; i < kTables; ++i) {
        CLockThreadTable table;
        for (unsigned int thread = 1; thread <= kThreads; ++thread) {
            CLockThreadEntry& entry = table.Insert(thread);
            for (int mode = 0; mode < kModes; ++mode) entry.Push(mode % 2 ? LOCK_MODE_WRITE : LOCK_MODE_READ);
        }
    }
    EXPECT_LT(UsedBytes(), before + std::size_t{kTables} * kThreads * kModes * sizeof(TLockMode) / 2);
}

} // namespace
} // namespace vorlund::test
