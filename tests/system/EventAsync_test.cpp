// Asynchronous waits.
#include <vorlund/Event.h>
#include <vorlund/Exception.h>

#include "support/Actor.h"
#include "support/Latch.h"
#include "system/AsyncCalls.h"
#include "system/ProcessResources.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

using TData = CEvent::TAsyncCbData;

void ResetIt(TData& data) {
    data.event->SetState(false);
}

TEST(EventAsync, CallsWithTheRecordOfASingleEvent) {
    CEvent event;
    CAsyncCalls calls(ResetIt);
    const unsigned int number = event.WaitAsync(&CAsyncCalls::Callback, &calls);
    LetOthersRun();
    EXPECT_EQ(calls.Count(), 0);
    for (int call = 1; call <= 3; ++call) {
        event.SetState(true);
        ASSERT_TRUE(calls.Reach(call));
        const TData last = calls.Last();
        EXPECT_EQ(last.event, &event);
        EXPECT_EQ(last.index, 0u);
        EXPECT_EQ(last.handle, number);
        EXPECT_EQ(last.userData, &calls);
        EXPECT_NE(calls.LastThread(), std::this_thread::get_id());
        EXPECT_FALSE(event.GetState());
    }
    CEvent::StopAsync(number);
    event.SetState(true);
    LetOthersRun();
    EXPECT_EQ(calls.Count(), 3);
}

TEST(EventAsync, TheStaticFormIsTheSame) {
    CEvent event;
    event.SetState(true);
    CAsyncCalls calls(ResetIt);
    const unsigned int number = CEvent::WaitAsync(&CAsyncCalls::Callback, &calls, event);
    ASSERT_TRUE(calls.Reach(1));
    EXPECT_EQ(calls.Last().event, &event);
    EXPECT_EQ(calls.Last().handle, number);
    CEvent::StopAsync(number);
}

TEST(EventAsync, NumbersGoUpWhateverWasStopped) {
    CEvent event;
    const unsigned int first = event.WaitAsync(&ResetIt, nullptr);
    EXPECT_EQ(event.WaitAsync(&ResetIt, nullptr), first + 1);
    CEvent::StopAsync(first);
    CEvent::StopAsync(first + 1);
    EXPECT_EQ(CEvent::WaitAsync(&ResetIt, nullptr, event), first + 2);
    EXPECT_EQ(CEvent::WaitOneAsync(&ResetIt, nullptr, 1, &event), first + 3);
    EXPECT_EQ(CEvent::WaitAllAsync(&ResetIt, nullptr, 1, &event), first + 4);
    EXPECT_EQ(CEvent::WaitAllAsync(&ResetIt, nullptr, 0), first + 5);
    CEvent::StopAsync(first + 5);
}

TEST(EventAsync, CallsOverAndOverWhileTheEventIsSet) {
    CEvent event;
    CLatch isStopped(1);
    std::atomic<bool> isEnding{false};
    CAsyncCalls calls([&](TData& data) {
        if (!isEnding) return;
        CEvent::StopAsync(data.handle);
        isStopped.CountDown();
    });
    event.SetState(true);
    event.WaitAsync(&CAsyncCalls::Callback, &calls);
    EXPECT_TRUE(calls.Reach(50));
    event.SetState(false);
    // One more may have been on its way.
    const int count = calls.Count();
    LetOthersRun();
    EXPECT_LE(calls.Count(), count + 1);
    event.SetState(true);
    EXPECT_TRUE(calls.Reach(count + 10));
    isEnding = true;
    isStopped.Wait();
    const int last = calls.Count();
    EXPECT_TRUE(calls.Reach(last));
    LetOthersRun();
    EXPECT_EQ(calls.Count(), last);
}

TEST(EventAsync, WaitOneTellsWhichIsTheLowest) {
    CEvent a;
    CEvent b;
    CEvent c;
    CAsyncCalls calls(ResetIt);
    const unsigned int number = CEvent::WaitOneAsync(&CAsyncCalls::Callback, &calls, 3, &a, &b, &c);
    int call = 0;
    for (CEvent* const event : {&c, &a, &b}) {
        event->SetState(true);
        ASSERT_TRUE(calls.Reach(++call));
        EXPECT_EQ(calls.Last().event, event);
        EXPECT_EQ(calls.Last().index, event == &a ? 0u : event == &b ? 1u : 2u);
        EXPECT_EQ(calls.Last().handle, number);
    }
    CEvent::StopAsync(number);
    b.SetState(true);
    c.SetState(true);
    const unsigned int second = CEvent::WaitOneAsync(&CAsyncCalls::Callback, &calls, 3, &a, &b, &c);
    ASSERT_TRUE(calls.Reach(call + 2));
    EXPECT_EQ(calls.Last().event, &c);
    CEvent::StopAsync(second);
}

TEST(EventAsync, WaitAllTellsTheFirst) {
    CEvent a;
    CEvent b;
    CAsyncCalls calls([&](TData&) {
        b.SetState(false);
        a.SetState(false);
    });
    const unsigned int number = CEvent::WaitAllAsync(&CAsyncCalls::Callback, &calls, 2, &a, &b);
    b.SetState(true);
    LetOthersRun();
    EXPECT_EQ(calls.Count(), 0);
    a.SetState(true);
    ASSERT_TRUE(calls.Reach(1));
    EXPECT_EQ(calls.Last().event, &a);
    EXPECT_EQ(calls.Last().index, 0u);
    a.SetState(true);
    b.SetState(true);
    ASSERT_TRUE(calls.Reach(2));
    EXPECT_EQ(calls.Last().event, &a);
    EXPECT_EQ(calls.Last().index, 0u);
    CEvent::StopAsync(number);
    LetOthersRun();
}

TEST(EventAsync, StopsOnlyTheFirstWithTheCallback) {
    CEvent a;
    CEvent b;
    CEvent c;
    CAsyncCalls ofA(ResetIt);
    CAsyncCalls ofB(ResetIt);
    CAsyncCalls ofC(ResetIt);
    const unsigned int first = a.WaitAsync(&CAsyncCalls::OtherCallback, &ofA);
    b.WaitAsync(&CAsyncCalls::Callback, &ofB);
    c.WaitAsync(&CAsyncCalls::Callback, &ofC);
    CEvent::StopAsync(&CAsyncCalls::Callback);
    EXPECT_TRUE(Responds(a, ofA));
    EXPECT_TRUE(Responds(c, ofC));
    b.SetState(true);
    LetOthersRun();
    EXPECT_EQ(ofB.Count(), 0);
    CEvent::StopAsync(&CAsyncCalls::Callback);
    c.SetState(true);
    LetOthersRun();
    EXPECT_EQ(ofC.Count(), 1);
    CEvent::StopAsync(&CAsyncCalls::Callback);
    EXPECT_TRUE(Responds(a, ofA));
    CEvent::StopAsync(first);
}

TEST(EventAsync, UnknownNumbersAndCallbacksAreIgnored) {
    CEvent event;
    CAsyncCalls calls(ResetIt);
    const unsigned int number = event.WaitAsync(&CAsyncCalls::Callback, &calls);
    CEvent::StopAsync(number + 1);
    CEvent::StopAsync(0xFFFFFFFFu);
    CEvent::StopAsync(&ResetIt);
    EXPECT_TRUE(Responds(event, calls));
    CEvent::StopAsync(number);
    CEvent::StopAsync(number);
}

TEST(EventAsync, AnEventThatGoesStopsEveryWaitThatListsIt) {
    const int threads = CountThreads();
    std::optional<CEvent> event(std::in_place);
    CEvent copy(*event);
    CEvent other;
    CAsyncCalls gone;
    CAsyncCalls stays(ResetIt);
    event->WaitAsync(&CAsyncCalls::Callback, &gone);
    CEvent::WaitOneAsync(&CAsyncCalls::Callback, &gone, 2, &other, &*event);
    CEvent::WaitAllAsync(&CAsyncCalls::Callback, &gone, 2, &copy, &*event);
    event->WaitAsync(&CAsyncCalls::Callback, &gone);
    // It compares objects, so a copy's own wait goes on.
    const unsigned int ofCopy = copy.WaitAsync(&CAsyncCalls::OtherCallback, &stays);
    event.reset();
    EXPECT_TRUE(ThreadsComeDownTo(threads + 1)) << "a wait goes on without its event";
    // Whichever wait is still there is called now.
    other.SetState(true);
    for (int call = 0; call < 10; ++call) EXPECT_TRUE(Responds(copy, stays));
    CEvent::StopAsync(ofCopy);
    EXPECT_TRUE(ThreadsComeDownTo(threads));
    EXPECT_EQ(gone.Count(), 0);
}

TEST(EventAsync, AssignmentLeavesAWaitWithItsEvent) {
    CEvent event;
    CEvent former(event);
    CEvent next;
    CAsyncCalls calls([&](TData&) { former.SetState(false); });
    const unsigned int number = event.WaitAsync(&CAsyncCalls::Callback, &calls);
    event = next;
    former.SetState(true);
    ASSERT_TRUE(calls.Reach(1));
    EXPECT_EQ(calls.Last().event, &event);
    next.SetState(true);
    LetOthersRun();
    EXPECT_EQ(calls.Count(), 1);
    CEvent::StopAsync(number);
}

TEST(EventAsync, ACallbackMayStopItsOwnWait) {
    CEvent event;
    event.SetState(true);
    CAsyncCalls byNumber([](TData& data) { CEvent::StopAsync(data.handle); });
    event.WaitAsync(&CAsyncCalls::Callback, &byNumber);
    CAsyncCalls byCallback([](TData&) { CEvent::StopAsync(&CAsyncCalls::OtherCallback); });
    event.WaitAsync(&CAsyncCalls::OtherCallback, &byCallback);
    EXPECT_TRUE(byNumber.Reach(1));
    EXPECT_TRUE(byCallback.Reach(1));
    LetOthersRun();
    EXPECT_EQ(byNumber.Count(), 1);
    EXPECT_EQ(byCallback.Count(), 1);
}

TEST(EventAsync, ACallbackMayDestroyItsEvent) {
    auto* const event = new CEvent;
    CAsyncCalls calls([](TData& data) { delete data.event; });
    event->WaitAsync(&CAsyncCalls::Callback, &calls);
    event->SetState(true);
    EXPECT_TRUE(calls.Reach(1));
    LetOthersRun();
    EXPECT_EQ(calls.Count(), 1);
}

TEST(EventAsync, ACallbackMayStartAnotherWait) {
    CEvent first;
    CEvent second;
    CAsyncCalls ofSecond([](TData& data) { CEvent::StopAsync(data.handle); });
    CAsyncCalls ofFirst([&](TData& data) {
        second.WaitAsync(&CAsyncCalls::Callback, &ofSecond);
        CEvent::StopAsync(data.handle);
    });
    first.WaitAsync(&CAsyncCalls::Callback, &ofFirst);
    first.SetState(true);
    EXPECT_TRUE(ofFirst.Reach(1));
    second.SetState(true);
    EXPECT_TRUE(ofSecond.Reach(1));
    LetOthersRun();
    EXPECT_EQ(ofSecond.Last().event, &second);
}

TEST(EventAsync, AWaitThatStartsSoonAfterAnotherTakesOverItsThread) {
    constexpr int kRounds = 50;
    CEvent event;
    event.SetState(true);
    std::atomic<int> takenOver{0};
    CAsyncCalls calls([&](TData& data) {
        thread_local bool isKnown = false;
        if (isKnown) ++takenOver;
        isKnown = true;
        CEvent::StopAsync(data.handle);
    });
    for (int round = 1; round <= kRounds; ++round) {
        event.WaitAsync(&CAsyncCalls::Callback, &calls);
        ASSERT_TRUE(calls.Reach(round));
        // A thread that ended at once would have ended by then, most times.
        std::this_thread::yield();
    }
    // A busy machine may keep this thread away for longer than the other one waits.
    EXPECT_GE(takenOver, kRounds / 5);
}

TEST(EventAsync, ACallMayBeUnderWayWhenItsStopReturns) {
    CEvent event;
    CLatch isInside(1);
    CLatch mayLeave(1);
    CAsyncCalls calls([&](TData&) {
        isInside.CountDown();
        mayLeave.Wait();
    });
    const unsigned int number = event.WaitAsync(&CAsyncCalls::Callback, &calls);
    event.SetState(true);
    isInside.Wait();
    CEvent::StopAsync(number);
    mayLeave.CountDown();
    EXPECT_TRUE(calls.Reach(1));
    LetOthersRun();
    EXPECT_EQ(calls.Count(), 1);
}

TEST(EventAsync, NoCallBeginsAfterItsStop) {
    struct TRound {
        std::atomic<bool> isStopped{false};
        std::atomic<int> late{0};
        std::atomic<int> inside{0};
    };
    const int threads = CountThreads();
    // What a call that is under way looks at stays there.
    std::vector<TRound> rounds(500);
    CEvent event;
    event.SetState(true);
    for (TRound& round : rounds) {
        const unsigned int number = event.WaitAsync(
            [](TData& data) {
                TRound& mine = *static_cast<TRound*>(data.userData);
                // The second call in a row that finds the wait stopped has begun after the stop.
                ++mine.inside;
                if (mine.isStopped) ++mine.late;
                --mine.inside;
            },
            &round);
        if (number % 2) std::this_thread::yield();
        CEvent::StopAsync(number);
        round.isStopped = true;
    }
    EXPECT_TRUE(ThreadsComeDownTo(threads));
    for (const TRound& round : rounds) {
        EXPECT_LE(round.late, 1);
        EXPECT_EQ(round.inside, 0);
    }
}

/// Lists that the platform refuses to wait for: nothing is called, and stopping works as always.
TEST(EventAsync, OtherCountsCallNothing) {
    CEvent event;
    event.SetState(true);
    CAsyncCalls calls;
    std::vector<unsigned int> numbers;
    for (const int count : {0, -1, -0x7FFFFFFF - 1}) {
        numbers.push_back(CEvent::WaitOneAsync(&CAsyncCalls::Callback, &calls, count, &event));
        numbers.push_back(CEvent::WaitAllAsync(&CAsyncCalls::Callback, &calls, count, &event));
    }
    CEvent* const e = &event;
#define VRL_EIGHT e, e, e, e, e, e, e, e
#define VRL_SIXTY_FOUR VRL_EIGHT, VRL_EIGHT, VRL_EIGHT, VRL_EIGHT, VRL_EIGHT, VRL_EIGHT, VRL_EIGHT, VRL_EIGHT
    numbers.push_back(CEvent::WaitOneAsync(&CAsyncCalls::Callback, &calls, 65, VRL_SIXTY_FOUR, e));
    numbers.push_back(CEvent::WaitAllAsync(&CAsyncCalls::Callback, &calls, 65, VRL_SIXTY_FOUR, e));
    numbers.push_back(CEvent::WaitOneAsync(&CAsyncCalls::Callback, &calls, 260, VRL_SIXTY_FOUR,
                                           VRL_SIXTY_FOUR, VRL_SIXTY_FOUR, VRL_SIXTY_FOUR, e, e, e, e));
    numbers.push_back(CEvent::WaitOneAsync(nullptr, &calls, 1, e));
    LetOthersRun();
    EXPECT_EQ(calls.Count(), 0);
    for (const unsigned int number : numbers) CEvent::StopAsync(number);

    CAsyncCalls longest(ResetIt);
    const unsigned int number = CEvent::WaitOneAsync(&CAsyncCalls::Callback, &longest, 64, VRL_SIXTY_FOUR);
    EXPECT_TRUE(longest.Reach(1));
    CEvent::StopAsync(number);
}

TEST(EventAsync, AnEventAtTheEndOfALongListStopsTheWaitToo) {
    // Of a list that is too long 256 are kept, and an event of those stops the wait when it goes.
    CEvent event;
    CEvent* const e = &event;
    auto last = std::make_unique<CEvent>();
    const int threads = CountThreads();
    CEvent::WaitOneAsync(&ResetIt, nullptr, 68, VRL_SIXTY_FOUR, e, e, e, last.get());
    last.reset();
    EXPECT_TRUE(ThreadsComeDownTo(threads)) << "the wait goes on without its event";
}
#undef VRL_SIXTY_FOUR
#undef VRL_EIGHT

TEST(EventAsync, ManyWaitsForOneEventAllCall) {
    constexpr int kWaits = 40;
    CEvent event;
    std::atomic<int> called{0};
    CLatch all(kWaits);
    struct TShared {
        std::atomic<int>& called;
        CLatch& all;
    } shared{called, all};
    for (int wait = 0; wait < kWaits; ++wait) {
        event.WaitAsync(
            [](TData& data) {
                TShared& mine = *static_cast<TShared*>(data.userData);
                CEvent::StopAsync(data.handle);
                ++mine.called;
                mine.all.CountDown();
            },
            &shared);
    }
    event.SetState(true);
    all.Wait();
    EXPECT_EQ(called, kWaits);
}

} // namespace
} // namespace vorlund::test
