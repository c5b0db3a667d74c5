// Events that are registered once and served by a few threads.
#include <vorlund/WaitSet.h>

#include "support/Latch.h"
#include "system/AsyncCalls.h"
#include "system/ProcessResources.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

using TData = CWaitSet::TCbData;

void ResetIt(TData& data) {
    data.event->SetState(false);
}

TEST(WaitSet, CallsWheneverTheEventIsSet) {
    CEvent event;
    CWaitSet set;
    CSetCalls calls(ResetIt);
    EXPECT_EQ(set.Add(event, &CSetCalls::Callback, &calls), 0u);
    LetOthersRun();
    EXPECT_EQ(calls.Count(), 0);
    for (int call = 0; call < 100; ++call) ASSERT_TRUE(Responds(event, calls));
    EXPECT_EQ(calls.Count(), 100);
    EXPECT_EQ(calls.Last().number, 0u);
    EXPECT_FALSE(event.GetState());
    EXPECT_EQ(calls.Threads().size(), 1u);
    EXPECT_FALSE(calls.Threads().contains(std::this_thread::get_id()));
    set.Stop();
}

TEST(WaitSet, NumbersGoUpWhateverIsRemoved) {
    CEvent event;
    CWaitSet set;
    EXPECT_EQ(set.Add(event, &ResetIt, nullptr), 0u);
    EXPECT_EQ(set.AddOnce(event, &ResetIt, nullptr), 1u);
    set.Remove(0);
    set.Remove(0);
    set.Remove(17);
    EXPECT_EQ(set.Add(event, nullptr, nullptr), 2u);
}

TEST(WaitSet, AnEventThatIsSetAlreadyIsServed) {
    CEvent event;
    event.SetState(true);
    CWaitSet set;
    CSetCalls calls(ResetIt);
    set.Add(event, &CSetCalls::Callback, &calls);
    EXPECT_TRUE(calls.Reach(1));
    EXPECT_TRUE(Responds(event, calls));
    set.Stop();
}

TEST(WaitSet, CallsOverAndOverWhileTheEventIsSet) {
    CEvent event;
    CEvent other;
    CWaitSet set;
    CSetCalls calls([](TData&) {});
    CSetCalls ofOther(ResetIt);
    const unsigned int number = set.Add(event, &CSetCalls::Callback, &calls);
    set.Add(other, &CSetCalls::Callback, &ofOther);
    event.SetState(true);
    EXPECT_TRUE(calls.Reach(100));
    // The others have their turn.
    EXPECT_TRUE(Responds(other, ofOther));
    event.SetState(false);
    EXPECT_TRUE(Responds(other, ofOther));
    EXPECT_TRUE(Responds(other, ofOther));
    const int count = calls.Count();
    EXPECT_TRUE(Responds(other, ofOther));
    EXPECT_EQ(calls.Count(), count);
    event.SetState(true);
    EXPECT_TRUE(calls.Reach(count + 100));
    set.Remove(number);
    set.Stop();
}

TEST(WaitSet, OnceIsOneCall) {
    CEvent event;
    CWaitSet set;
    CSetCalls calls([](TData&) {});
    const unsigned int number = set.AddOnce(event, &CSetCalls::Callback, &calls);
    event.SetState(true);
    ASSERT_TRUE(calls.Reach(1));
    LetOthersRun();
    EXPECT_EQ(calls.Count(), 1);
    set.Remove(number);
    // A callback may add its entry again.
    std::atomic<int> left{10};
    CSetCalls again([&](TData& data) {
        if (--left > 0) set.AddOnce(*data.event, &CSetCalls::Callback, data.userData);
    });
    set.AddOnce(event, &CSetCalls::Callback, &again);
    EXPECT_TRUE(again.Reach(10));
    LetOthersRun();
    EXPECT_EQ(again.Count(), 10);
    set.Stop();
}

TEST(WaitSet, ARemovedEntryIsNotCalled) {
    CEvent event;
    CWaitSet set;
    CSetCalls gone(ResetIt);
    CSetCalls stays(ResetIt);
    const unsigned int number = set.Add(event, &CSetCalls::Callback, &gone);
    set.Remove(set.AddOnce(event, &CSetCalls::Callback, &gone));
    set.Add(event, &CSetCalls::Callback, &stays);
    set.Remove(number);
    EXPECT_TRUE(Responds(event, stays));
    EXPECT_EQ(gone.Count(), 0);
    set.Stop();
}

TEST(WaitSet, ACallbackMayRemoveItselfAndOthers) {
    CEvent event;
    event.SetState(true);
    CWaitSet set;
    CSetCalls never(ResetIt);
    CEvent quiet;
    const unsigned int other = set.Add(quiet, &CSetCalls::Callback, &never);
    CSetCalls calls([&](TData& data) {
        set.Remove(data.number);
        set.Remove(other);
        quiet.SetState(true);
    });
    set.Add(event, &CSetCalls::Callback, &calls);
    ASSERT_TRUE(calls.Reach(1));
    LetOthersRun();
    EXPECT_EQ(calls.Count(), 1);
    EXPECT_EQ(never.Count(), 0);
    set.Stop();
}

TEST(WaitSet, NoCallBeginsAfterItsRemoval) {
    struct TRound {
        std::atomic<bool> isRemoved{false};
        std::atomic<int> late{0};
    };
    std::vector<TRound> rounds(500);
    CEvent event;
    event.SetState(true);
    CWaitSet set(3);
    for (TRound& round : rounds) {
        const unsigned int number = set.Add(
            event,
            [](TData& data) {
                TRound& mine = *static_cast<TRound*>(data.userData);
                if (mine.isRemoved) ++mine.late;
            },
            &round);
        if (number % 2) std::this_thread::yield();
        set.Remove(number);
        round.isRemoved = true;
    }
    set.Stop();
    // One may have been under way.
    for (const TRound& round : rounds) EXPECT_LE(round.late, 1);
}

TEST(WaitSet, StopWaitsForTheCallsThatAreUnderWay) {
    const int threads = CountThreads();
    CEvent event;
    std::atomic<int> inside{0};
    std::atomic<int> calls{0};
    for (int round = 0; round < 50; ++round) {
        CWaitSet set(4);
        CLatch hasBegun(1);
        CSetCalls repeated([&](TData&) {
            ++inside;
            if (++calls % 8 == 1) hasBegun.CountDown();
            std::this_thread::yield();
            --inside;
        });
        calls = 0;
        for (int entry = 0; entry < 8; ++entry) set.Add(event, &CSetCalls::Callback, &repeated);
        event.SetState(true);
        hasBegun.Wait();
        set.Stop();
        EXPECT_EQ(inside, 0);
        const int count = calls;
        EXPECT_EQ(set.Add(event, &CSetCalls::Callback, &repeated), kNoWaitNumber);
        set.Stop();
        EXPECT_EQ(calls, count);
    }
    EXPECT_TRUE(ThreadsComeDownTo(threads)) << CountThreads() - threads;
}

TEST(WaitSet, ACallbackMayStopItsSet) {
    CEvent event;
    event.SetState(true);
    std::optional<CWaitSet> set(std::in_place, 2);
    CSetCalls calls([&](TData&) { set->Stop(); });
    for (int entry = 0; entry < 8; ++entry) set->Add(event, &CSetCalls::Callback, &calls);
    ASSERT_TRUE(calls.Reach(1));
    // Two may have begun at once.
    set->Stop();
    EXPECT_GE(calls.Count(), 1);
    EXPECT_LE(calls.Count(), 2);
    set.reset();
}

TEST(WaitSet, TwoThreadsMayStopItAtOnce) {
    for (int round = 0; round < 20; ++round) {
        CEvent event;
        event.SetState(true);
        CWaitSet set(2);
        std::atomic<int> inside{0};
        CSetCalls calls([&](TData&) {
            ++inside;
            std::this_thread::yield();
            --inside;
        });
        for (int entry = 0; entry < 4; ++entry) set.Add(event, &CSetCalls::Callback, &calls);
        std::thread other([&] {
            set.Stop();
            EXPECT_EQ(inside, 0);
        });
        set.Stop();
        EXPECT_EQ(inside, 0);
        other.join();
    }
}

TEST(WaitSet, TheEventMayGoOrChangeWhileItIsWaitedFor) {
    std::optional<CEvent> event(std::in_place);
    CEvent copy(*event);
    CEvent assigned;
    CEvent former(assigned);
    CWaitSet set;
    CSetCalls ofCopy(ResetIt);
    CSetCalls ofFormer(ResetIt);
    CSetCalls gone(ResetIt);
    set.Add(*event, &CSetCalls::Callback, &ofCopy);
    set.Add(assigned, &CSetCalls::Callback, &ofFormer);
    {
        CEvent shortLived;
        set.Add(shortLived, &CSetCalls::Callback, &gone);
    }
    event.reset();
    assigned = CEvent();
    EXPECT_TRUE(Responds(copy, ofCopy));
    EXPECT_TRUE(Responds(former, ofFormer));
    assigned.SetState(true);
    EXPECT_TRUE(Responds(copy, ofCopy));
    EXPECT_EQ(ofFormer.Count(), 1);
    EXPECT_EQ(gone.Count(), 0);
    set.Stop();
}

TEST(WaitSet, ACallbackMayDestroyTheEvent) {
    auto* const event = new CEvent;
    CWaitSet set;
    CSetCalls calls([&](TData& data) {
        delete event;
        data.event->SetState(false);
        set.Remove(data.number);
    });
    set.Add(*event, &CSetCalls::Callback, &calls);
    event->SetState(true);
    EXPECT_TRUE(calls.Reach(1));
    set.Stop();
}

TEST(WaitSet, WaitsBesideItSeeTheEventToo) {
    CEvent event;
    CEvent other;
    CEvent reply;
    CWaitSet set;
    CSetCalls calls([&](TData& data) {
        data.event->SetState(false);
        reply.SetState(true);
    });
    set.Add(event, &CSetCalls::Callback, &calls);
    for (int round = 0; round < 200; ++round) {
        std::thread waits([&] { EXPECT_EQ(CEvent::WaitOne(2, &reply, &other), 0u); });
        event.SetState(true);
        waits.join();
        reply.SetState(false);
    }
    EXPECT_EQ(calls.Count(), 200);
    // A wait for all of which one is in a set.
    CEvent inSet;
    const unsigned int number = set.AddOnce(inSet, &CSetCalls::Callback, &calls);
    set.Remove(number);
    set.Add(inSet, nullptr, nullptr);
    std::thread all([&] { CEvent::WaitAll(2, &inSet, &other); });
    inSet.SetState(true);
    inSet.SetState(false);
    other.SetState(true);
    inSet.SetState(true);
    all.join();
    set.Stop();
}

TEST(WaitSet, SeveralThreadsCallAtOnce) {
    constexpr int kThreads = 4;
    CWaitSet set(kThreads);
    CEvent events[kThreads];
    CLatch all(kThreads);
    CSetCalls calls([&](TData& data) {
        data.event->SetState(false);
        all.ArriveAndWait(); // which one thread alone could never leave
    });
    for (CEvent& event : events) set.Add(event, &CSetCalls::Callback, &calls);
    for (CEvent& event : events) event.SetState(true);
    EXPECT_TRUE(calls.Reach(kThreads));
    EXPECT_EQ(calls.Threads().size(), static_cast<std::size_t>(kThreads));
    set.Stop();
}

TEST(WaitSet, AnEntryIsNeverCalledTwiceAtOnce) {
    CEvent event;
    event.SetState(true);
    CWaitSet set(4);
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    CSetCalls calls([&](TData&) {
        const int now = ++inside;
        if (now > most) most = now;
        std::this_thread::yield();
        --inside;
    });
    set.Add(event, &CSetCalls::Callback, &calls);
    EXPECT_TRUE(calls.Reach(500));
    set.Stop();
    EXPECT_EQ(most, 1);
}

TEST(WaitSet, FiveThousandEventsTakeFewThreads) {
    constexpr int kEvents = 5000;
#if defined(_WIN32)
    constexpr int kMostThreads = 100;
#else
    constexpr int kMostThreads = 2;
#endif
    const int threads = CountThreads();
    std::vector<CEvent> events(kEvents);
    std::atomic<int> most{0};
    CWaitSet set(2);
    CSetCalls calls([&](TData& data) {
        data.event->SetState(false);
        if (data.number % 500 == 0) most = std::max(most.load(), CountThreads() - threads);
    });
    for (int index = 0; index < kEvents; ++index) {
        if (index % 2)
            set.Add(events[index], &CSetCalls::Callback, &calls);
        else
            set.AddOnce(events[index], &CSetCalls::Callback, &calls);
    }
    for (CEvent& event : events) event.SetState(true);
    EXPECT_TRUE(calls.Reach(kEvents));
    // The repeated ones again, from the last to the first.
    for (int index = kEvents - 1; index >= 0; --index) events[index].SetState(true);
    EXPECT_TRUE(calls.Reach(kEvents + kEvents / 2));
    EXPECT_LE(most, kMostThreads);
    EXPECT_LE(CountThreads() - threads, kMostThreads);
    set.Stop();
    EXPECT_EQ(calls.Count(), kEvents + kEvents / 2);
}

TEST(WaitSet, OtherNumbersOfThreadsGiveTheNearest) {
    for (const int threads : {0, -5, 1000}) {
        CEvent event;
        CWaitSet set(threads);
        CSetCalls calls(ResetIt);
        set.Add(event, &CSetCalls::Callback, &calls);
        EXPECT_TRUE(Responds(event, calls));
        set.Stop();
    }
    CWaitSet unused(3);
}

} // namespace
} // namespace vorlund::test
