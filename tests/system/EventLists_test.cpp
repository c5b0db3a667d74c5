// Waits for any of several events and for all of them.
#include <vorlund/Event.h>
#include <vorlund/Exception.h>

#include "support/Actor.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <string>
#include <thread>
#include <utility>

namespace vorlund::test {
namespace {

constexpr unsigned int kFailed = 0xFFFFFFFF;

/// Events that are handed over as an argument list.
template <std::size_t kCount> class CEvents {
public:
    CEvent& operator[](std::size_t index) { return events_[index]; }
    CEvent& Last() { return events_[kCount - 1]; }

    void SetAll(bool state) {
        for (CEvent& event : events_) event.SetState(state);
    }

    /// Calls `wait` with the count and a pointer to each event.
    template <class TWait> auto Call(TWait wait) {
        return [&]<std::size_t... kIndex>(std::index_sequence<kIndex...>) {
            return wait(static_cast<int>(kCount), &events_[kIndex]...);
        }
        (std::make_index_sequence<kCount>());
    }
    unsigned int WaitOne() {
        return Call([](auto... list) { return CEvent::WaitOne(list...); });
    }
    unsigned int WaitOne(float seconds) {
        return Call([=](auto... list) { return CEvent::WaitOne(seconds, list...); });
    }
    void WaitAll() {
        Call([](auto... list) { CEvent::WaitAll(list...); });
    }
    void WaitAll(float seconds) {
        Call([=](auto... list) { CEvent::WaitAll(seconds, list...); });
    }

private:
    std::array<CEvent, kCount> events_;
};

/// Whether a wait for all comes to an end at once.
template <std::size_t kCount> bool AreAllSet(CEvents<kCount>& events) {
    try {
        events.WaitAll(0.0f);
        return true;
    } catch (const CTimeoutException&) {
        return false;
    }
}

TEST(EventListsWaitOne, GivesTheLowestThatIsSet) {
    CEvents<3> events;
    events[1].SetState(true);
    events[2].SetState(true);
    EXPECT_EQ(events.WaitOne(), 1u);
    EXPECT_EQ(events.WaitOne(0.0f), 1u);
    events[0].SetState(true);
    EXPECT_EQ(events.WaitOne(), 0u);
    events[0].SetState(false);
    events[1].SetState(false);
    EXPECT_EQ(events.WaitOne(10.0f), 2u);
    EXPECT_TRUE(events[2].GetState());
    events[2].SetState(false);
    ExpectRaises<CTimeoutException>(eventfailures::kWaitOne, [&] { events.WaitOne(0.0f); });
}

TEST(EventListsWaitOne, GivesEveryPositionOfTheLongestList) {
    CEvents<64> events;
    for (std::size_t index = 0; index < 64; ++index) {
        events[index].SetState(true);
        EXPECT_EQ(events.WaitOne(), index);
        EXPECT_EQ(events.WaitOne(0.0f), index);
        EXPECT_FALSE(AreAllSet(events));
        events[index].SetState(false);
    }
}

TEST(EventListsWaitOne, WakesWithThePositionThatWasSet) {
    CEvents<64> events;
    CActor waiter;
    for (const std::size_t index : {std::size_t{0}, std::size_t{1}, std::size_t{31}, std::size_t{63}}) {
        unsigned int result = kFailed;
        waiter.Start([&] { result = index % 2 ? events.WaitOne() : events.WaitOne(600.0f); });
        EXPECT_TRUE(waiter.StaysBusy());
        events[index].SetState(true);
        EXPECT_TRUE(waiter.Finishes());
        EXPECT_EQ(result, index);
        events[index].SetState(false);
    }
}

TEST(EventListsWaitOne, ASecondSettingDoesNotChangeWhatTheFirstReleased) {
    CEvents<2> events;
    CActor waiter;
    for (int round = 0; round < 20; ++round) {
        unsigned int result = kFailed;
        waiter.Start([&] { result = events.WaitOne(); });
        std::this_thread::yield();
        events[1].SetState(true);
        EXPECT_TRUE(waiter.Finishes());
        EXPECT_EQ(result, 1u);
        events[1].SetState(false);
    }
}

TEST(EventListsWaitOne, AnEventMayStandInTheListTwice) {
    CEvent event;
    CEvent other;
    CActor waiter;
    unsigned int result = kFailed;
    waiter.Start([&] { result = CEvent::WaitOne(4, &other, &event, &other, &event); });
    EXPECT_TRUE(waiter.StaysBusy());
    event.SetState(true);
    EXPECT_TRUE(waiter.Finishes());
    EXPECT_EQ(result, 1u);
    EXPECT_EQ(CEvent::WaitOne(2, &event, &event), 0u);
}

TEST(EventListsWaitOne, SeesNoStateThatNeverWas) {
    // At every moment at least one of the two is set, and 1 is only set alone after 0 was reset.
    CEvents<2> events;
    events[0].SetState(true);
    std::atomic<bool> isEnding{false};
    std::thread changer([&] {
        while (!isEnding) {
            events[1].SetState(true);
            events[0].SetState(false);
            events[0].SetState(true);
            events[1].SetState(false);
        }
    });
    for (int round = 0; round < 5000; ++round) EXPECT_NO_THROW(events.WaitOne(0.0f));
    isEnding = true;
    changer.join();
}

TEST(EventListsWaitOne, SeesThatALowerOneIsSetBeforeAHigherOne) {
    CEvents<2> events;
    std::atomic<bool> isEnding{false};
    std::thread changer([&] {
        while (!isEnding) {
            events[0].SetState(true);
            events[1].SetState(true);
            events[1].SetState(false);
            events[0].SetState(false);
        }
    });
    for (int round = 0; round < 5000; ++round) ASSERT_EQ(events.WaitOne(), 0u);
    isEnding = true;
    changer.join();
}

TEST(EventListsWaitAll, NeedsEveryOne) {
    CEvents<3> events;
    EXPECT_FALSE(AreAllSet(events));
    events[0].SetState(true);
    events[1].SetState(true);
    EXPECT_FALSE(AreAllSet(events));
    ExpectRaises<CTimeoutException>(eventfailures::kWaitAll, [&] { events.WaitAll(0.002f); });
    events[2].SetState(true);
    EXPECT_TRUE(AreAllSet(events));
    events.WaitAll();
    EXPECT_TRUE(events[0].GetState());
    events[1].SetState(false);
    EXPECT_FALSE(AreAllSet(events));
}

TEST(EventListsWaitAll, WakesWithTheLastOne) {
    CEvents<64> events;
    CActor unlimited;
    CActor limited;
    unlimited.Start([&] { events.WaitAll(); });
    limited.Start([&] { events.WaitAll(600.0f); });
    for (std::size_t index = 1; index < 64; ++index) events[index].SetState(true);
    EXPECT_TRUE(unlimited.StaysBusy());
    EXPECT_TRUE(limited.StaysBusy());
    events[0].SetState(true);
    EXPECT_TRUE(unlimited.Finishes());
    EXPECT_TRUE(limited.Finishes());
}

TEST(EventListsWaitAll, NeedsThemAtTheSameTime) {
    CEvents<3> events;
    CActor waiter;
    waiter.Start([&] { events.WaitAll(); });
    EXPECT_TRUE(waiter.StaysBusy());
    // Every one has been set, but never all together.
    events[0].SetState(true);
    events[1].SetState(true);
    events[1].SetState(true);
    events[0].SetState(false);
    events[0].SetState(false);
    events[2].SetState(true);
    EXPECT_TRUE(waiter.StaysBusy());
    events[2].SetState(false);
    events[0].SetState(true);
    EXPECT_TRUE(waiter.StaysBusy());
    events[2].SetState(true);
    // Released by that moment, whatever becomes of the events.
    events.SetAll(false);
    EXPECT_TRUE(waiter.Finishes());
}

TEST(EventListsWaitAll, NeverSeesTwoTogetherThatNeverWere) {
    CEvents<2> events;
    std::atomic<bool> isEnding{false};
    std::thread changer([&] {
        while (!isEnding) {
            events[0].SetState(true);
            events[0].SetState(false);
            events[1].SetState(true);
            events[1].SetState(false);
        }
    });
    for (int round = 0; round < 5000; ++round) ASSERT_FALSE(AreAllSet(events));
    ExpectRaises<CTimeoutException>(eventfailures::kWaitAll, [&] { events.WaitAll(0.05f); });
    isEnding = true;
    changer.join();
}

TEST(EventListsWaitAll, EveryWaiterIsReleased) {
    CEvents<2> events;
    CActor all;
    CActor allBackwards;
    CActor one;
    CActor single;
    all.Start([&] { events.WaitAll(); });
    allBackwards.Start([&] { CEvent::WaitAll(2, &events[1], &events[0]); });
    one.Start([&] { EXPECT_EQ(CEvent::WaitOne(2, &events[1], &events[0]), 1u); });
    EXPECT_TRUE(all.StaysBusy());
    EXPECT_TRUE(allBackwards.StaysBusy());
    EXPECT_TRUE(one.StaysBusy());
    events[0].SetState(true);
    EXPECT_TRUE(one.Finishes());
    single.Start([&] { events[1].Wait(); });
    EXPECT_TRUE(single.StaysBusy());
    EXPECT_TRUE(all.StaysBusy());
    events[1].SetState(true);
    EXPECT_TRUE(all.Finishes());
    EXPECT_TRUE(allBackwards.Finishes());
    EXPECT_TRUE(single.Finishes());
}

/// Lists that the platform refuses: the waits fail at once, with limit or without, and raise nothing.
TEST(EventLists, OtherCountsFailAtOnce) {
    CEvent set;
    set.SetState(true);
    CEvents<65> tooMany;
    const CDebugRecorder recorder;
    for (const bool state : {false, true}) {
        tooMany.SetAll(state);
        EXPECT_EQ(tooMany.WaitOne(), kFailed);
        EXPECT_EQ(tooMany.WaitOne(0.0f), kFailed);
        tooMany.WaitAll();
        tooMany.WaitAll(0.0f);
    }
    for (const int count : {0, -1, -65, -0x7FFFFFFF - 1}) {
        EXPECT_EQ(CEvent::WaitOne(count, &set), kFailed);
        EXPECT_EQ(CEvent::WaitOne(60.0f, count, &set), kFailed);
        CEvent::WaitAll(count, &set);
        CEvent::WaitAll(60.0f, count, &set);
    }
    EXPECT_TRUE(recorder.GetEntries().empty());
}

TEST(EventLists, OfMoreThanAreLookedAtFailAtOnce) {
    CEvents<300> events;
    EXPECT_EQ(events.WaitOne(), kFailed);
    EXPECT_EQ(events.WaitOne(60.0f), kFailed);
    events.WaitAll();
    events.WaitAll(60.0f);
}

TEST(EventLists, ANullAmongTheEventsFailsAtOnce) {
    CEvent event;
    CEvent* const null = nullptr;
    EXPECT_EQ(CEvent::WaitOne(1, null), kFailed);
    EXPECT_EQ(CEvent::WaitOne(60.0f, 2, &event, null), kFailed);
    CEvent::WaitAll(2, &event, null);
    CEvent::WaitAll(60.0f, 2, null, &event);
}

} // namespace
} // namespace vorlund::test
