#include "vorlund/system/PlainLock.h"

#include "support/Actor.h"
#include "support/Latch.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

// Taken by code that runs before `main` and before any constructor of the lock would.
extern CPlainLock earlyLock;
const bool isTakenEarly = earlyLock.TryLock();
constinit CPlainLock earlyLock;

TEST(PlainLock, IsThereBeforeAnyCodeRuns) {
    EXPECT_TRUE(isTakenEarly);
    EXPECT_FALSE(earlyLock.TryLock()) << "what came later has made it anew";
}

TEST(PlainLock, TryLockTellsWhetherItGotIt) {
    CPlainLock lock;
    EXPECT_TRUE(lock.TryLock());
    EXPECT_FALSE(lock.TryLock());
    lock.Unlock();
    EXPECT_TRUE(lock.TryLock());
    lock.Unlock();
}

TEST(PlainLock, SleepersGetItOneAfterTheOther) {
    CPlainLock lock;
    CActor a;
    CActor b;
    int inside = 0;
    const auto take = [&] {
        const CPlainLockGuard guard(lock);
        ++inside;
    };
    lock.Lock();
    a.Start(take);
    b.Start(take);
    EXPECT_TRUE(a.StaysBusy());
    EXPECT_TRUE(b.StaysBusy());
    EXPECT_EQ(inside, 0);
    lock.Unlock();
    EXPECT_TRUE(a.Finishes());
    EXPECT_TRUE(b.Finishes());
    EXPECT_EQ(inside, 2);
}

TEST(PlainLock, OneThreadAtATimeIsInside) {
    constexpr int kThreads = 6;
    constexpr int kTurns = 20000;
    CPlainLock lock;
    long value = 0;
    CLatch start(kThreads);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            start.ArriveAndWait();
            for (int turn = 0; turn < kTurns; ++turn) {
                const CPlainLockGuard guard(lock);
                ++value;
                if (turn % 64 == 0) std::this_thread::yield();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(value, long{kThreads} * kTurns);
}

} // namespace
} // namespace vorlund::test
