#include <vorlund/Event.h>
#include <vorlund/Exception.h>
#include <vorlund/PeriodicClock.h>

#include "support/Actor.h"
#include "support/Failures.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <thread>
#include <type_traits>

namespace vorlund::test {
namespace {

using TClock = std::chrono::steady_clock;

static_assert(!std::is_copy_constructible_v<CPeriodicClock> && !std::is_copy_assignable_v<CPeriodicClock>);

constexpr double kForever = 86400;

constexpr TFailure kBadPeriod{VRL_L("vorlund::CPeriodicClock::CPeriodicClock"),
                              VRL_L("src/vorlund/system/PeriodicClock"), 24,
                              VRL_L("Period must be 1 microsecond to 1 day")};

double SecondsBetween(TClock::time_point from, TClock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

/// A clock, and the moments between which it was started.
struct TStarted {
    explicit TStarted(double seconds) : period(seconds), before(TClock::now()), clock(seconds) {}

    /// Whether so many ticks may be due, when one asked after `asked` and before now. The clocks of this test
    /// and of the library may differ by their steps.
    void ExpectTicks(std::uint64_t ticks, TClock::time_point asked) const {
        constexpr double kStep = 0.000001;
        EXPECT_GE(static_cast<double>(ticks), std::floor((SecondsBetween(after, asked) - kStep) / period));
        EXPECT_LE(static_cast<double>(ticks),
                  std::floor((SecondsBetween(before, TClock::now()) + kStep) / period));
    }

    double period;
    TClock::time_point before;
    CPeriodicClock clock;
    TClock::time_point after = TClock::now();
};

TEST(PeriodicClock, TicksKeepUpWithTimeHoweverManyThereAre) {
    // The second is no whole number of nanoseconds.
    for (const double period : {0.001, 1.0 / 2700, 0.0000625}) {
        TStarted started(period);
        std::uint64_t ticks = 0;
        while (ticks < 300) {
            const auto asked = TClock::now();
            const std::uint64_t more = started.clock.Wait();
            ASSERT_GE(more, 1u);
            ticks += more;
            started.ExpectTicks(ticks, asked);
        }
        EXPECT_EQ(ticks, started.clock.GetWaitedTicks());
    }
}

TEST(PeriodicClock, TicksThatNobodyWaitedForAreCounted) {
    TStarted started(0.0005);
    EXPECT_EQ(0u, started.clock.GetWaitedTicks());
    while (started.clock.GetTicks() < 20) std::this_thread::yield();
    const auto asked = TClock::now();
    const std::uint64_t ticks = started.clock.Wait();
    EXPECT_GE(ticks, 20u);
    started.ExpectTicks(ticks, asked);
    EXPECT_EQ(ticks, started.clock.GetWaitedTicks());
    EXPECT_GE(started.clock.GetTicks(), ticks);
}

TEST(PeriodicClock, AWaitEndsNotBeforeItsTick) {
    TStarted started(0.02);
    EXPECT_GE(started.clock.Wait(), 1u);
    EXPECT_GE(SecondsBetween(started.before, TClock::now()), 0.02 - 0.000001);
}

TEST(PeriodicClock, ARestartBeginsAnew) {
    TStarted started(0.02);
    started.clock.Wait();
    const auto restarted = TClock::now();
    started.clock.Restart();
    EXPECT_EQ(0u, started.clock.GetWaitedTicks());
    EXPECT_GE(started.clock.Wait(), 1u);
    EXPECT_GE(SecondsBetween(restarted, TClock::now()), 0.02 - 0.000001);
}

TEST(PeriodicClock, ASetEventEndsTheWaitAndKeepsTheTicks) {
    CPeriodicClock clock(0.0005);
    CEvent stop;
    EXPECT_GE(clock.Wait(stop), 1u);
    while (clock.GetTicks() < clock.GetWaitedTicks() + 5) std::this_thread::yield();
    stop.SetState(true);
    EXPECT_EQ(0u, clock.Wait(stop));
    stop.SetState(false);
    EXPECT_GE(clock.Wait(stop), 5u);
}

TEST(PeriodicClock, AnotherThreadEndsALongWait) {
    CPeriodicClock clock(kForever);
    CEvent stop;
    std::uint64_t ticks = 1;
    CActor waiter;
    waiter.Start([&] { ticks = clock.Wait(stop); });
    stop.SetState(true);
    ASSERT_TRUE(waiter.Finishes());
    EXPECT_EQ(0u, ticks);
    EXPECT_EQ(0u, clock.GetTicks());
}

TEST(PeriodicClock, OtherPeriodsAreRefused) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const double period :
         {0.0, -1.0, 0.0000009, 86401.0, kInfinity, -kInfinity, std::numeric_limits<double>::quiet_NaN()})
        ExpectRaises<CInvalidParameterException>(kBadPeriod, [&] { const CPeriodicClock clock(period); });
}

} // namespace
} // namespace vorlund::test
