#include "vorlund/system/Thread.h"

#include "support/Actor.h"
#include "support/Latch.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

TEST(Thread, IdsDifferAmongLivingThreadsAndStayTheSame) {
    constexpr std::size_t kThreads = 40;
    std::vector<unsigned int> ids(kThreads);
    CLatch allAlive(kThreads);
    std::vector<std::thread> threads;
    for (unsigned int& id : ids) {
        threads.emplace_back([&] {
            id = CurrentThreadId();
            allAlive.ArriveAndWait();
            EXPECT_EQ(CurrentThreadId(), id);
            EXPECT_EQ(NotedThreadId(), id);
        });
    }
    for (std::thread& thread : threads) thread.join();
    ids.push_back(CurrentThreadId());
    const std::set<unsigned int> distinct(ids.begin(), ids.end());
    EXPECT_EQ(distinct.size(), kThreads + 1);
    EXPECT_FALSE(distinct.contains(kUnknownThread));
    EXPECT_FALSE(distinct.contains(kNoThread));
}

TEST(Thread, ParkWhileReturnsWhenTheWordIsDifferent) {
    const std::atomic<std::uint32_t> word{5};
    CActor sleeper;
    for (const std::uint32_t other : {4u, 0u}) {
        sleeper.Start([&] { ParkWhile(word, other); });
        ASSERT_TRUE(sleeper.Finishes()) << other;
    }
}

TEST(Thread, UnparkOneOfNobodyTouchesNothing) {
    const std::atomic<std::uint32_t> word{7};
    UnparkOne(&word);
    EXPECT_EQ(word, 7u);
    // Only the address is used, so nothing needs to be there.
    UnparkOne(reinterpret_cast<const void*>(std::uintptr_t{64}));
}

TEST(Thread, ASleeperWakes) {
    std::atomic<std::uint32_t> word{0};
    CActor sleeper;
    for (int turn = 0; turn < 200; ++turn) {
        word = 0;
        sleeper.Start([&] {
            while (word == 0) ParkWhile(word, 0);
        });
        if (turn == 0) {
            EXPECT_TRUE(sleeper.StaysBusy());
        }
        word = 1;
        UnparkOne(&word);
        ASSERT_TRUE(sleeper.Finishes()) << turn;
    }
}

} // namespace
} // namespace vorlund::test
