#include "support/Latch.h"

#include <vorlund/ReadWriteLock.h>

#include "system/LockViews.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

/// Lets others run while the caller holds what it holds, so that they find it held and queue up.
void DawdleSometimes(std::minstd_rand& random) {
    if (random() % 32 == 0) std::this_thread::yield();
}

TEST(ReadWriteLockThreadsStress, ManyThreadsHoldItAtOnce) {
    constexpr int kThreads = 60;
    CReadWriteLock lock;
    CLatch allHold(kThreads);
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back([&, number] {
            const unsigned int param = static_cast<unsigned int>(number) + 1;
            for (int turn = 0; turn < 3; ++turn) {
                lock.Lock(LOCK_MODE_READ, 0);
                lock.Lock(LOCK_MODE_READ, param);
                if (turn == 0) allHold.ArriveAndWait();
                if (lock.GetLockMode() != LOCK_MODE_READ || lock.GetParam() != param) ++wrong;
                lock.Unlock();
                if (lock.GetParam() != param) ++wrong;
                lock.Unlock();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(Look(lock), "-");
    ExpectFree(lock);
}

struct TMixRow {
    const char* name;
    int threads;
    unsigned int writes;   ///< percent, the rest reads
    unsigned int upgrades; ///< percent, of the first thread's turns
};

constexpr TMixRow kMixRows[] = {
    {"WritersOnly", 4, 100, 0}, {"HalfAndHalf", 4, 50, 0},
    {"FewWrites", 4, 5, 0},     {"MoreThreadsThanSlotsNearby", 12, 20, 0},
    {"OneUpgrader", 4, 0, 30},
};

class ReadWriteLockThreadsStressMix : public testing::TestWithParam<TMixRow> {};

/// Readers must see the two halves equal and nothing change while they hold; only the threads that the lock
/// admits write. The halves are plain, so that a sanitizer sees every way past the lock.
TEST_P(ReadWriteLockThreadsStressMix, KeepsWhatItGuardsWhole) {
    const TMixRow& row = GetParam();
    constexpr int kTurns = 20000;
    CReadWriteLock lock;
    long left = 0;
    long right = 0;
    std::atomic<int> wrong{0};
    std::vector<long> written(static_cast<std::size_t>(row.threads));
    CLatch start(row.threads);

    const auto run = [&](int number) {
        std::minstd_rand random(static_cast<unsigned int>(number) + 1);
        long& mine = written[static_cast<std::size_t>(number)];
        const auto write = [&] {
            if (left != right) ++wrong;
            ++left;
            lock.Lock(LOCK_MODE_READ, 3);
            DawdleSometimes(random);
            ++right;
            lock.Lock(LOCK_MODE_WRITE, 4);
            ++mine;
            if (lock.GetParam() != 4) ++wrong;
            lock.Unlock();
            lock.Unlock();
        };
        start.ArriveAndWait();
        for (int turn = 0; turn < kTurns; ++turn) {
            if (random() % 100 < row.writes) {
                lock.Lock(LOCK_MODE_WRITE, 0);
                write();
                lock.Unlock();
                continue;
            }
            lock.Lock(LOCK_MODE_READ, 0);
            const long before = left;
            if (number == 0 && random() % 100 < row.upgrades) {
                lock.Lock(LOCK_MODE_WRITE, 0);
                if (left != before) ++wrong;
                write();
                lock.Unlock();
                if (left != before + 1) ++wrong;
            } else {
                DawdleSometimes(random);
                lock.Lock(LOCK_MODE_READ, 2);
                if (right != before) ++wrong;
                lock.Unlock();
            }
            lock.Unlock();
        }
    };
    std::vector<std::thread> threads;
    for (int number = 0; number < row.threads; ++number) threads.emplace_back(run, number);
    for (std::thread& thread : threads) thread.join();

    EXPECT_EQ(wrong, 0);
    long total = 0;
    for (const long mine : written) total += mine;
    EXPECT_EQ(left, total);
    EXPECT_EQ(right, total);
    ExpectFree(lock);
}

INSTANTIATE_TEST_SUITE_P(Rows, ReadWriteLockThreadsStressMix, testing::ValuesIn(kMixRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ReadWriteLockThreadsStress, AllUpgradersAndWritersGetThroughInTheEnd) {
    // Upgrades do not exclude each other or writers, so there is nothing to guard here; but nobody may be
    // forgotten, and the lock must be free at the end.
    constexpr int kThreads = 6;
    constexpr int kTurns = 10000;
    CReadWriteLock lock;
    CLatch start(kThreads);
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back([&, number] {
            std::minstd_rand random(static_cast<unsigned int>(number) + 100);
            start.ArriveAndWait();
            for (int turn = 0; turn < kTurns; ++turn) {
                lock.Lock(random() % 3 ? LOCK_MODE_READ : LOCK_MODE_WRITE, 0);
                lock.Lock(random() % 3 ? LOCK_MODE_WRITE : LOCK_MODE_READ, 0);
                lock.Lock(random() % 2 ? LOCK_MODE_WRITE : LOCK_MODE_READ, 0);
                DawdleSometimes(random);
                for (int level = 0; level < 3; ++level) lock.Unlock();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(Look(lock), "-");
    ExpectFree(lock);
}

} // namespace
} // namespace vorlund::test
