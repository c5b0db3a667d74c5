#include "vorlund/system/ParkingLot.h"

#include "support/Actor.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

struct TCondition {
    void Wait(std::mutex& held) { condition.wait(held); }
    void Notify() { condition.notify_one(); }
    std::condition_variable_any condition;
};

using TWord = std::atomic<std::uint32_t>;

/// Sleepers on the words of one lot. There are more words than buckets, so some share one.
class ParkingLot : public testing::Test {
protected:
    static constexpr std::size_t kWords = 200;

    void StartSleep(CActor& actor, TWord& word) {
        actor.Start([this, &word] {
            while (word == 0) lot_.ParkWhile(word, 0);
        });
    }
    void Wake(TWord& word) {
        word = 1;
        lot_.UnparkOne(&word);
    }

    CParkingLot<std::mutex, TCondition> lot_;
    std::vector<TWord> words_ = std::vector<TWord>(kWords);
};

TEST_F(ParkingLot, DoesNotSleepWhenTheWordIsDifferent) {
    words_[0] = 3;
    CActor sleeper;
    sleeper.Start([this] { lot_.ParkWhile(words_[0], 0); });
    EXPECT_TRUE(sleeper.Finishes());
}

TEST_F(ParkingLot, WakesTheSleeperOfTheWordAndNoOther) {
    CActor a;
    CActor b;
    StartSleep(a, words_[0]);
    StartSleep(b, words_[1]);
    EXPECT_TRUE(a.StaysBusy());
    EXPECT_TRUE(b.StaysBusy());
    for (std::size_t word = 2; word < kWords; ++word) Wake(words_[word]);
    EXPECT_TRUE(a.StaysBusy());
    Wake(words_[1]);
    EXPECT_TRUE(b.Finishes());
    EXPECT_TRUE(a.StaysBusy());
    Wake(words_[0]);
    EXPECT_TRUE(a.Finishes());
}

TEST_F(ParkingLot, OneWakeForOneSleeper) {
    // A semaphore: every count lets one through, and every count wakes one.
    TWord& counts = words_[7];
    const auto take = [&] {
        for (;;) {
            std::uint32_t seen = counts;
            if (seen == 0)
                lot_.ParkWhile(counts, 0);
            else if (counts.compare_exchange_strong(seen, seen - 1))
                return;
        }
    };
    CActor a;
    CActor b;
    a.Start(take);
    b.Start(take);
    EXPECT_TRUE(a.StaysBusy());
    EXPECT_TRUE(b.StaysBusy());
    const auto give = [&] {
        ++counts;
        lot_.UnparkOne(&counts);
    };
    give();
    while (counts != 0) std::this_thread::yield();
    EXPECT_TRUE(a.StaysBusy() || b.StaysBusy());
    give();
    EXPECT_TRUE(a.Finishes());
    EXPECT_TRUE(b.Finishes());
    EXPECT_EQ(counts, 0u);
}

TEST_F(ParkingLot, SleepersOfAllWordsWake) {
    // Many in few buckets, woken in another order than they came, some from the middle of a list.
    constexpr std::size_t kSleepers = 24;
    std::vector<CActor> sleepers(kSleepers);
    for (std::size_t sleeper = 0; sleeper < kSleepers; ++sleeper) {
        sleepers[sleeper].Start([this, sleeper] {
            for (std::size_t turn = 0; turn < 20; ++turn) {
                TWord& word = words_[(sleeper * 20 + turn) % kWords];
                while (word == 0) lot_.ParkWhile(word, 0);
            }
        });
    }
    for (std::size_t step = 0; step < kWords; ++step) {
        TWord& word = words_[step * 77 % kWords];
        word = 1;
        for (std::size_t sleeper = 0; sleeper < kSleepers; ++sleeper) lot_.UnparkOne(&word);
    }
    for (CActor& sleeper : sleepers) EXPECT_TRUE(sleeper.Finishes()) << "a sleeper was forgotten";
}

} // namespace
} // namespace vorlund::test
