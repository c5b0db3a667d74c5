#include <vorlund/EventWaits.h>

#include "support/DebugRecorder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

using namespace std::chrono_literals;

/// Longer than any thread here takes.
constexpr auto kLongWait = 60s;

class EventWaits : public testing::Test {
protected:
    CEvent a_;
    CEvent b_;
};

TEST_F(EventWaits, TellWhetherAnEventIsSet) {
    EXPECT_FALSE(WaitFor(a_, 0s));
    EXPECT_FALSE(WaitFor(a_, -5s));
    EXPECT_FALSE(WaitFor(a_, 1ms));
    a_.SetState(true);
    EXPECT_TRUE(WaitFor(a_, 0s));
    EXPECT_TRUE(WaitFor(a_, kLongWait));
    EXPECT_TRUE(WaitFor(a_, std::chrono::duration<double>(std::numeric_limits<double>::infinity())));
}

TEST_F(EventWaits, NothingIsReportedAtATimeLimit) {
    CDebugRecorder recorder;
    EXPECT_FALSE(WaitFor(a_, 1ms));
    EXPECT_FALSE(WaitAny({&a_, &b_}, 1ms));
    EXPECT_FALSE(WaitAll({&a_, &b_}, 1ms));
    EXPECT_TRUE(recorder.GetEntries().empty());
}

TEST_F(EventWaits, AnyIsTheLowest) {
    b_.SetState(true);
    EXPECT_EQ(WaitAny({&a_, &b_}), 1u);
    EXPECT_EQ(WaitAny({&a_, &b_, &b_}, kLongWait), 1u);
    a_.SetState(true);
    EXPECT_EQ(WaitAny({&a_, &b_}, 0s), 0u);
    const std::vector<const CEvent*> list{&b_, &a_};
    EXPECT_EQ(WaitAny(list), 0u);
}

TEST_F(EventWaits, AllMustBeSetTogether) {
    a_.SetState(true);
    EXPECT_FALSE(WaitAll({&a_, &b_}, 0s));
    b_.SetState(true);
    EXPECT_TRUE(WaitAll({&a_, &b_}));
    const std::vector<const CEvent*> list{&b_, &a_};
    EXPECT_TRUE(WaitAll(list, kLongWait));
}

TEST_F(EventWaits, WakeWhenAnotherThreadSets) {
    std::thread other([this] { b_.SetState(true); });
    EXPECT_EQ(WaitAny({&a_, &b_}, kLongWait), 1u);
    other.join();
    std::thread both([this] { a_.SetState(true); });
    EXPECT_TRUE(WaitAll({&a_, &b_}, kLongWait));
    both.join();
}

TEST_F(EventWaits, ListsThatNoWaitTakesFailAtOnce) {
    a_.SetState(true);
    const std::vector<const CEvent*> tooMany(kMaxWaitedEvents + 1, &a_);
    std::vector<CEvent> events(kMaxWaitedEvents, a_);
    std::vector<const CEvent*> most;
    for (const CEvent& event : events) most.push_back(&event);
    EXPECT_EQ(WaitForEvents(nullptr, 0, false, -1), kWaitFailed);
    EXPECT_EQ(WaitForEvents(tooMany.data(), tooMany.size(), false, -1), kWaitFailed);
    EXPECT_EQ(WaitForEvents(most.data(), most.size(), false, -1), 0u);
    EXPECT_FALSE(WaitAny(std::span<const CEvent* const>()));
    EXPECT_FALSE(WaitAny({nullptr, nullptr}));
    EXPECT_FALSE(WaitAll({&a_, nullptr}));
    EXPECT_FALSE(WaitAll(tooMany));
}

TEST(EventWaitsTimes, AreRoundedUpToWholeMilliseconds) {
    using eventwaits::MillisecondsOf;
    EXPECT_EQ(MillisecondsOf(1us), 1);
    EXPECT_EQ(MillisecondsOf(1ms), 1);
    EXPECT_EQ(MillisecondsOf(1001us), 2);
    EXPECT_EQ(MillisecondsOf(0s), 0);
    EXPECT_EQ(MillisecondsOf(-1us), 0);
    EXPECT_EQ(MillisecondsOf(-1h), 0);
    EXPECT_EQ(MillisecondsOf(std::chrono::hours::max()), -1);
    EXPECT_EQ(MillisecondsOf(std::chrono::duration<double>(HUGE_VAL)), -1);
    EXPECT_EQ(MillisecondsOf(std::chrono::duration<double>(std::nan(""))), -1);
}

} // namespace
} // namespace vorlund::test
