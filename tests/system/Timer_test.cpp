#include <vorlund/Exception.h>
#include <vorlund/Timer.h>

#include "support/Actor.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/Latch.h"
#include "system/AsyncCalls.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace vorlund::test {
namespace {

using TClock = std::chrono::steady_clock;

static_assert(std::has_virtual_destructor_v<CTimer>);
static_assert(std::is_base_of_v<CEvent, CTimer>);
static_assert(!std::is_copy_constructible_v<CTimer> && !std::is_copy_assignable_v<CTimer>);
static_assert(sizeof(CTimer) == sizeof(CEvent) + sizeof(void*));

/// Longer than anything here takes.
constexpr float kLimit = 30.0f;

/// Expects that the timer signals.
void ExpectSignal(CTimer& timer) {
    EXPECT_NO_THROW(timer.Wait(kLimit));
}

/// Time for a signal that must not come.
void LetPass(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

TEST(Timer, DoesNothingUntilItIsStarted) {
    CTimer timer(0.001f);
    EXPECT_FALSE(timer.GetState());
    ExpectRaises<CTimeoutException>(eventfailures::kWait, [&] { timer.Wait(0.03f); });
    timer.Stop();
    EXPECT_FALSE(timer.GetState());
}

TEST(Timer, IsSetOncePerPeriodAndStaysSet) {
    CTimer timer(0.0205f);
    const auto start = TClock::now();
    timer.Start();
    timer.Wait(kLimit);
    // Twenty ticks, of which the first may come early in its millisecond.
    EXPECT_GE(TClock::now() - start, std::chrono::milliseconds(18));
    EXPECT_TRUE(timer.GetState());
    LetPass(30);
    EXPECT_TRUE(timer.GetState());
    for (int signal = 0; signal < 3; ++signal) {
        timer.SetState(false);
        timer.Wait(kLimit);
    }
    EXPECT_GE(TClock::now() - start, std::chrono::milliseconds(78));
    timer.Stop();
}

TEST(Timer, StopLeavesTheStateAndEndsTheSignals) {
    CTimer timer(0.001f);
    timer.Start();
    timer.Wait(kLimit);
    timer.Stop();
    EXPECT_TRUE(timer.GetState());
    timer.SetState(false);
    LetPass(20);
    EXPECT_FALSE(timer.GetState());
}

TEST(Timer, StartedTwiceIsStoppedOnce) {
    CTimer timer(0.001f);
    timer.Start();
    timer.Start();
    timer.Wait(kLimit);
    timer.Stop();
    timer.SetState(false);
    LetPass(20);
    EXPECT_FALSE(timer.GetState());
    timer.Stop();
}

TEST(Timer, TheOnlyOneCanBeStartedAgainAndAgain) {
    CTimer timer(0.001f);
    for (int round = 0; round < 20; ++round) {
        timer.Start();
        ExpectSignal(timer);
        timer.Stop();
        timer.SetState(false);
    }
    for (int round = 0; round < 200; ++round) {
        timer.Start();
        timer.Stop();
    }
    timer.SetState(false);
    timer.Start();
    ExpectSignal(timer);
}

TEST(Timer, AnotherOneGoesOnWhenTheFirstStops) {
    CTimer first(0.002f);
    CTimer second(0.002f);
    CTimer third(0.002f);
    first.Start();
    second.Start();
    third.Start();
    CEvent::WaitAll(kLimit, 3, &first, &second, &third);
    second.Stop();
    for (CTimer* const timer : {&first, &second, &third}) timer->SetState(false);
    CEvent::WaitAll(kLimit, 2, &first, &third);
    EXPECT_FALSE(second.GetState());
    first.Stop();
    third.SetState(false);
    third.Wait(kLimit);
    third.Stop();
    second.Start();
    second.Wait(kLimit);
}

TEST(Timer, IsStoppedWhenItGoes) {
    for (int round = 0; round < 20; ++round) {
        CTimer timer(0.0f);
        timer.Start();
    }
    auto timer = std::make_unique<CTimer>(0.001f);
    CTimer other(0.001f);
    timer->Start();
    other.Start();
    timer.reset();
    for (int signal = 0; signal < 3; ++signal) {
        ExpectSignal(other);
        other.SetState(false);
    }
}

TEST(Timer, ShorterPeriodsSignalMoreOften) {
    CTimer fast(0.005f);
    CTimer slow(0.05f);
    int fastSignals = 0;
    slow.Start();
    fast.Start();
    for (int slowSignals = 0; slowSignals < 3;) {
        const unsigned int which = CEvent::WaitOne(kLimit, 2, &slow, &fast);
        (which == 0 ? slow : fast).SetState(false);
        ++(which == 0 ? slowSignals : fastSignals);
    }
    // Some thirty, unless this thread was held up.
    EXPECT_GE(fastSignals, 3);
}

struct TPeriodRow {
    const char* name;
    float period;
    bool isEveryTick;
};

class TimerPeriod : public testing::TestWithParam<TPeriodRow> {};

TEST_P(TimerPeriod, IsWhatItsConversionGives) {
    CTimer timer(GetParam().period);
    CTimer clock(0.001f);
    timer.Start();
    clock.Start();
    for (int tick = 0; tick < 5; ++tick) {
        clock.Wait(kLimit);
        clock.SetState(false);
        if (GetParam().isEveryTick) {
            // It may lie one tick ahead of the clock or behind it: these two resets are not one.
            timer.Wait(kLimit);
            timer.SetState(false);
        } else {
            EXPECT_FALSE(timer.GetState());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TimerPeriod,
    testing::Values(TPeriodRow{"Zero", 0.0f, true}, TPeriodRow{"BelowOne", 0.0009f, true},
                    TPeriodRow{"Negative", -0.5f, true}, TPeriodRow{"One", 0.001f, true},
                    TPeriodRow{"NotANumber", std::numeric_limits<float>::quiet_NaN(), true},
                    TPeriodRow{"Infinite", std::numeric_limits<float>::infinity(), true},
                    TPeriodRow{"Huge", 1e30f, true},
                    // The low 32 bits of the first as a signed number are negative, those of the last 600 s.
                    TPeriodRow{"WrapsToNegative", 2147484.0f, true}, TPeriodRow{"Long", 1000000.0f, false},
                    TPeriodRow{"WrapsToLong", -4294367.5f, false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Timer, DrivesAsynchronousWaits) {
    CTimer timer(0.001f);
    int calls = 0;
    CAsyncCalls recorder([&](CEvent::TAsyncCbData& data) {
        data.event->SetState(false);
        if (++calls == 5) CEvent::StopAsync(data.handle);
    });
    timer.WaitAsync(&CAsyncCalls::Callback, &recorder);
    timer.Start();
    EXPECT_TRUE(recorder.Reach(5));
    EXPECT_EQ(recorder.Last().event, &timer);
    LetPass(20);
    EXPECT_EQ(recorder.Count(), 5);
}

TEST(Timer, MayBeStoppedByTheCallbackThatItDrives) {
    CTimer timer(0.001f);
    CAsyncCalls calls([&](CEvent::TAsyncCbData& data) {
        timer.Stop();
        CEvent::StopAsync(data.handle);
    });
    timer.WaitAsync(&CAsyncCalls::Callback, &calls);
    timer.Start();
    EXPECT_TRUE(calls.Reach(1));
    timer.SetState(false);
    LetPass(20);
    EXPECT_FALSE(timer.GetState());
    EXPECT_EQ(calls.Count(), 1);
}

TEST(Timer, SharesItsEventWithCopies) {
    CTimer timer(0.001f);
    CEvent copy(timer);
    timer.Start();
    copy.Wait(kLimit);
    timer.Stop();
    EXPECT_TRUE(timer.GetState());
}

TEST(Timer, StartsAndStopsFromManyThreads) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 200;
    CTimer shared(0.0f);
    CLatch start(kThreads);
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back([&, number] {
            CTimer own(0.0f);
            start.ArriveAndWait();
            for (int round = 0; round < kRounds; ++round) {
                shared.Start();
                own.Start();
                if (round % 50 == number) own.Wait(kLimit);
                own.Stop();
                own.SetState(false);
                shared.Stop();
                if (own.GetState()) ADD_FAILURE() << "set after its stop";
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    shared.SetState(false);
    shared.Start();
    ExpectSignal(shared);
}

TEST(Timer, AThousandRunAtOnce) {
    std::vector<std::unique_ptr<CTimer>> timers;
    for (int timer = 0; timer < 1000; ++timer) {
        timers.push_back(std::make_unique<CTimer>(0.001f * static_cast<float>(timer % 10)));
        timers.back()->Start();
    }
    for (const auto& timer : timers) timer->Wait(kLimit);
    for (std::size_t timer = 0; timer < timers.size(); timer += 2) timers[timer]->Stop();
    for (const auto& timer : timers) timer->SetState(false);
    for (std::size_t timer = 0; timer < timers.size(); ++timer) {
        if (timer % 2) timers[timer]->Wait(kLimit);
        EXPECT_EQ(timers[timer]->GetState(), timer % 2 == 1);
    }
}

} // namespace
} // namespace vorlund::test
