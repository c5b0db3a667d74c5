#include <vorlund/Event.h>
#include <vorlund/Exception.h>

#include "support/Actor.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace vorlund::test {
namespace {

static_assert(std::has_virtual_destructor_v<CEvent>);
static_assert(std::is_copy_constructible_v<CEvent> && std::is_copy_assignable_v<CEvent>);
static_assert(sizeof(CEvent) == 2 * sizeof(void*));

TEST(Event, IsNotSetAtFirstAndStaysSetUntilItIsReset) {
    CEvent event;
    EXPECT_FALSE(event.GetState());
    event.SetState(false);
    EXPECT_FALSE(event.GetState());
    event.SetState(true);
    EXPECT_TRUE(event.GetState());
    event.SetState(true);
    EXPECT_TRUE(event.GetState());
    event.Wait();
    event.Wait(0.0f);
    CEvent::Wait(event);
    CEvent::Wait(0.0f, event);
    EXPECT_TRUE(event.GetState());
    event.SetState(false);
    EXPECT_FALSE(event.GetState());
}

struct TTimeoutRow {
    const char* name;
    void (*wait)(CEvent& set, CEvent& unset, float seconds);
    TFailure failure;
};

constexpr TTimeoutRow kTimeoutRows[] = {
    {"Wait", [](CEvent&, CEvent& unset, float seconds) { unset.Wait(seconds); }, eventfailures::kWait},
    {"StaticWait", [](CEvent&, CEvent& unset, float seconds) { CEvent::Wait(seconds, unset); },
     eventfailures::kStaticWait},
    {"WaitOne", [](CEvent&, CEvent& unset, float seconds) { CEvent::WaitOne(seconds, 1, &unset); },
     eventfailures::kWaitOne},
    {"WaitOneOfTwo",
     [](CEvent&, CEvent& unset, float seconds) { CEvent::WaitOne(seconds, 2, &unset, &unset); },
     eventfailures::kWaitOne},
    {"WaitAll", [](CEvent& set, CEvent& unset, float seconds) { CEvent::WaitAll(seconds, 2, &set, &unset); },
     eventfailures::kWaitAll},
    {"WaitAllOfOne", [](CEvent&, CEvent& unset, float seconds) { CEvent::WaitAll(seconds, 1, &unset); },
     eventfailures::kWaitAll},
};

class EventTimeout : public testing::TestWithParam<TTimeoutRow> {};

TEST_P(EventTimeout, RaisesAndLeavesTheEventsAlone) {
    CEvent set;
    CEvent unset;
    set.SetState(true);
    for (const float seconds : {0.0f, 0.0009f, 0.002f, -0.0009f, std::numeric_limits<float>::quiet_NaN(),
                                std::numeric_limits<float>::infinity(), -1e30f, 1e30f}) {
        SCOPED_TRACE(seconds);
        ExpectRaises<CTimeoutException>(GetParam().failure, [&] { GetParam().wait(set, unset, seconds); });
        EXPECT_TRUE(set.GetState());
        EXPECT_FALSE(unset.GetState());
    }
}

TEST_P(EventTimeout, ComesNoEarlierThanItsTime) {
    CEvent set;
    CEvent unset;
    set.SetState(true);
    const auto start = std::chrono::steady_clock::now();
    ExpectRaises<CTimeoutException>(GetParam().failure, [&] { GetParam().wait(set, unset, 0.03f); });
    // The clock of Windows goes in steps of up to 16 ms.
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(14));
}

TEST_P(EventTimeout, IsReportedOnce) {
    CEvent set;
    CEvent unset;
    set.SetState(true);
    const CDebugRecorder recorder;
    ExpectRaises<CTimeoutException>(GetParam().failure, [&] { GetParam().wait(set, unset, 0.0f); });
    const TFailure& failure = GetParam().failure;
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT),
              std::vector<std::string>{
                  "Exception: type=CTimeoutException | method=" + Narrow(failure.method) +
                  " | file=src/vorlund/system/EventWin32 | line=" + std::to_string(failure.line) +
                  " | reason=Timeout"});
    EXPECT_TRUE(recorder.GetTexts(DEBUG_MESSAGE_BOX).empty());
}

TEST_P(EventTimeout, DoesNotComeWhenTheEventIsSetInTime) {
    CEvent set;
    CEvent unset;
    set.SetState(true);
    CActor other;
    // -0.001 s has no limit, and -1 s is a limit of 49 days.
    for (const float seconds : {60.0f, -0.001f, -1.0f}) {
        SCOPED_TRACE(seconds);
        unset.SetState(false);
        other.Start([&] { GetParam().wait(set, unset, seconds); });
        EXPECT_TRUE(other.StaysBusy());
        unset.SetState(true);
        EXPECT_TRUE(other.Finishes());
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, EventTimeout, testing::ValuesIn(kTimeoutRows),
                         [](const auto& row) { return std::string(row.param.name); });

struct TWaitRow {
    const char* name;
    void (*wait)(CEvent& event);
};

constexpr TWaitRow kWaitRows[] = {
    {"Wait", [](CEvent& event) { event.Wait(); }},
    {"WaitWithLimit", [](CEvent& event) { event.Wait(600.0f); }},
    {"StaticWait", [](CEvent& event) { CEvent::Wait(event); }},
    {"StaticWaitWithLimit", [](CEvent& event) { CEvent::Wait(600.0f, event); }},
    {"WaitOne", [](CEvent& event) { EXPECT_EQ(CEvent::WaitOne(1, &event), 0u); }},
    {"WaitOneWithLimit", [](CEvent& event) { EXPECT_EQ(CEvent::WaitOne(600.0f, 1, &event), 0u); }},
    {"WaitAll", [](CEvent& event) { CEvent::WaitAll(1, &event); }},
    {"WaitAllWithLimit", [](CEvent& event) { CEvent::WaitAll(600.0f, 1, &event); }},
};

class EventWait : public testing::TestWithParam<TWaitRow> {};

TEST_P(EventWait, SleepsUntilTheEventIsSet) {
    CEvent event;
    CActor a;
    CActor b;
    a.Start([&] { GetParam().wait(event); });
    b.Start([&] { GetParam().wait(event); });
    EXPECT_TRUE(a.StaysBusy());
    EXPECT_TRUE(b.StaysBusy());
    event.SetState(true);
    EXPECT_TRUE(a.Finishes());
    EXPECT_TRUE(b.Finishes());
    EXPECT_TRUE(event.GetState());
}

TEST_P(EventWait, IsReleasedBySettingAlthoughTheEventIsResetAtOnce) {
    CEvent event;
    CActor a;
    CActor b;
    a.Start([&] { GetParam().wait(event); });
    b.Start([&] { GetParam().wait(event); });
    EXPECT_TRUE(a.StaysBusy());
    EXPECT_TRUE(b.StaysBusy());
    event.SetState(true);
    event.SetState(false);
    EXPECT_TRUE(a.Finishes());
    EXPECT_TRUE(b.Finishes());
}

TEST_P(EventWait, TheWaiterMayDestroyTheEventAtOnce) {
    CActor setter;
    CActor waiter;
    for (int round = 0; round < 300; ++round) {
        CEvent* const event = new CEvent;
        waiter.Start([event] {
            GetParam().wait(*event);
            delete event;
        });
        setter.Start([event] { event->SetState(true); });
        ASSERT_TRUE(waiter.Finishes()) << round;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, EventWait, testing::ValuesIn(kWaitRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(EventCopy, IsTheSameEvent) {
    CEvent event;
    CEvent copy(event);
    EXPECT_FALSE(copy.GetState());
    event.SetState(true);
    EXPECT_TRUE(copy.GetState());
    copy.SetState(false);
    EXPECT_FALSE(event.GetState());
    const CEvent copyOfCopy(copy);
    CEvent assigned;
    assigned.SetState(true);
    assigned = copyOfCopy;
    EXPECT_FALSE(assigned.GetState());
    assigned.SetState(true);
    EXPECT_TRUE(event.GetState());
    EXPECT_TRUE(copy.GetState());
}

TEST(EventCopy, TakesTheStateThatThereIs) {
    CEvent event;
    event.SetState(true);
    CEvent copy(event);
    EXPECT_TRUE(copy.GetState());
}

TEST(EventCopy, OutlivesItsSource) {
    std::optional<CEvent> event(std::in_place);
    CEvent copy(*event);
    CEvent assigned;
    assigned = *event;
    event.reset();
    copy.SetState(true);
    EXPECT_TRUE(assigned.GetState());
    assigned.Wait();
}

TEST(EventCopy, AssignmentGivesUpTheOwnEvent) {
    CEvent left;
    CEvent formerLeft(left);
    CEvent right;
    left = right;
    formerLeft.SetState(true);
    EXPECT_FALSE(left.GetState());
    right.SetState(true);
    EXPECT_TRUE(left.GetState());
    formerLeft.SetState(false);
    EXPECT_TRUE(left.GetState());
}

TEST(EventCopy, AssignmentOfTheSameEventOrTheSameObjectChangesNothing) {
    CEvent event;
    CEvent copy(event);
    event.SetState(true);
    copy = event;
    CEvent& same = copy;
    copy = same;
    EXPECT_TRUE(copy.GetState());
    copy.SetState(false);
    EXPECT_FALSE(event.GetState());
}

TEST(EventCopy, WakesWaitersOfTheOther) {
    CEvent event;
    CEvent copy(event);
    CActor a;
    CActor b;
    a.Start([&] { event.Wait(); });
    b.Start([&] { CEvent::WaitAll(1, &event); });
    EXPECT_TRUE(a.StaysBusy());
    EXPECT_TRUE(b.StaysBusy());
    copy.SetState(true);
    EXPECT_TRUE(a.Finishes());
    EXPECT_TRUE(b.Finishes());
}

TEST(EventCopy, ThoseWhoWaitStayWithTheEventThatTheyWaitFor) {
    CEvent event;
    CEvent copy(event);
    const CEvent other;
    CActor single;
    CActor several;
    CActor limited;
    single.Start([&] { event.Wait(); });
    several.Start([&] { CEvent::WaitOne(2, &event, &event); });
    limited.Start([&] { event.Wait(600.0f); });
    EXPECT_TRUE(single.StaysBusy());
    EXPECT_TRUE(several.StaysBusy());
    EXPECT_TRUE(limited.StaysBusy());
    event = other;
    EXPECT_TRUE(single.StaysBusy());
    copy.SetState(true);
    EXPECT_TRUE(single.Finishes());
    EXPECT_TRUE(several.Finishes());
    EXPECT_TRUE(limited.Finishes());
}

TEST(EventCopy, AWaitForAnEventThatIsGoneComesToItsLimit) {
    std::optional<CEvent> event(std::in_place);
    CEvent* const object = &*event;
    std::optional<CEvent> other(std::in_place);
    CActor single;
    CActor several;
    std::atomic<int> timeouts{0};
    const auto count = [&](auto wait) {
        try {
            wait();
        } catch (const CTimeoutException&) {
            ++timeouts;
        }
    };
    CEvent never;
    single.Start([&] { count([&] { object->Wait(0.15f); }); });
    several.Start([&] { count([&] { CEvent::WaitOne(0.15f, 2, object, &never); }); });
    EXPECT_TRUE(single.StaysBusy());
    EXPECT_TRUE(several.StaysBusy());
    *object = *other;
    other.reset();
    EXPECT_TRUE(single.Finishes());
    EXPECT_TRUE(several.Finishes());
    EXPECT_EQ(timeouts, 2);
}

} // namespace
} // namespace vorlund::test
