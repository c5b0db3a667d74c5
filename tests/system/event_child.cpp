// The child program of the tests of events and timers at the end of a process: ends as an application ends,
// in the state that its argument names. What it returns is its own judgement: 0 when all was well.
#include "support/ChildReports.h"
#include "support/EndProcess.h"
#include "support/Leaks.h"

#include <vorlund/Timer.h>
#include <vorlund/Vorlund.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <string_view>
#include <thread>

namespace vorlund::test {
namespace {

using TData = CEvent::TAsyncCbData;

void DoNothing(TData&) {}

/// An object that is never destroyed.
CEvent& MakeEvent() {
    const CExpectedLeak leak;
    return *new CEvent;
}

void StartWaits() {
    CEvent& a = MakeEvent();
    CEvent& b = MakeEvent();
    a.WaitAsync(&DoNothing, nullptr);
    CEvent::WaitOneAsync(&DoNothing, nullptr, 2, &a, &b);
    CEvent::WaitAllAsync(&DoNothing, nullptr, 2, &a, &b);
}

/// A running timer whose thread is known to run.
void StartTimer() {
    CTimer& timer = *new CTimer(0.001f);
    timer.Start();
    timer.Wait();
}

/// 0 when the first waits of the process are numbered from 0.
int LookAtFirstNumbers() {
    CEvent event;
    for (unsigned int number = 0; number < 5; ++number) {
        if (event.WaitAsync(&DoNothing, nullptr) != number) return 1;
        if (number % 2) CEvent::StopAsync(number - 1);
    }
    return 0;
}

/// A callback that has begun and never ends.
void EnterACallbackForEver() {
    static CEvent& isInside = MakeEvent();
    static CEvent& never = MakeEvent();
    CEvent& event = MakeEvent();
    event.SetState(true);
    event.WaitAsync(
        [](TData&) {
            isInside.SetState(true);
            never.Wait();
        },
        nullptr);
    isInside.Wait();
}

/// Callbacks that come over and over. A thread that leaves its callback while the process ends already has
/// nobody who joins it, because the library does not wait for callbacks then.
void StartCallbacks() {
    static CEvent& isCalled = MakeEvent();
    for (int wait = 0; wait < 4; ++wait) {
        CEvent& event = MakeEvent();
        event.SetState(true);
        event.WaitAsync([](TData&) { isCalled.SetState(true); }, nullptr);
    }
    isCalled.Wait();
}

/// Threads of the application that go on working while the process ends.
void StartThreads() {
    static CEvent& isWorking = MakeEvent();
    for (int thread = 0; thread < 2; ++thread) {
        std::thread([] {
            for (;;) {
                CEvent event;
                CEvent::StopAsync(event.WaitAsync(&DoNothing, nullptr));
                isWorking.SetState(true);
            }
        }).detach();
    }
    isWorking.Wait();
}

/// Objects of the application that are destroyed while it ends, before the library.
void UseStaticObjects() {
    static CEvent event;
    static CTimer timer(0.001f);
    event.WaitAsync(&DoNothing, nullptr);
    timer.Start();
    timer.Wait();
}

#if defined(__ELF__)
/// The event that is waited for after the end of the library, or null.
CEvent* lateEvent = nullptr;

void WaitAfterTheEnd(void*) {
    if (!lateEvent) return;
    static std::atomic<bool> isCalled{false};
    const unsigned int first = lateEvent->WaitAsync([](TData&) { isCalled = true; }, nullptr);
    // Numbers go on, but nothing is waited for.
    if (lateEvent->WaitAsync(&DoNothing, nullptr) != first + 1) EndProcess(1);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    CEvent::StopAsync(first);
    if (isCalled) EndProcess(2);
}

/// Registered before all libraries begin, it is called after they have ended, which then are still there.
[[gnu::used, gnu::section(".preinit_array")]] void (*const registerLast)() = [] {
    abi::__cxa_atexit(&WaitAfterTheEnd, nullptr, nullptr);
};
#endif

int Run(std::string_view mode) {
    SendReportsToParent();
    if (mode == "first-numbers") return LookAtFirstNumbers();
    if (mode == "timer-alive") {
        StartTimer();
    } else if (mode == "timer-just-started") {
        (new CTimer(0.001f))->Start();
    } else if (mode == "timer-stopped") {
        CTimer timer(0.001f);
        timer.Start();
        timer.Wait();
    } else if (mode == "timer-alive-and-open") {
        StartTimer();
        v.Init();
    } else if (mode == "waits-at-return") {
        StartWaits();
    } else if (mode == "waits-at-exit") {
        StartWaits();
        std::exit(0);
    } else if (mode == "waits-that-fail") {
        CEvent::WaitOneAsync(&DoNothing, nullptr, 0);
        CEvent::WaitAllAsync(&DoNothing, nullptr, -1);
    } else if (mode == "callback-at-return") {
        EnterACallbackForEver();
    } else if (mode == "callbacks-at-return") {
        StartCallbacks();
    } else if (mode == "threads-at-return") {
        StartThreads();
#if defined(__ELF__)
    } else if (mode == "waits-after-the-end") {
        lateEvent = &MakeEvent();
        lateEvent->SetState(true);
#endif
    } else if (mode == "static-objects") {
        UseStaticObjects();
    } else {
        return 64;
    }
    return 0;
}

} // namespace
} // namespace vorlund::test

#if defined(__SANITIZE_THREAD__)
extern "C" const char* __tsan_default_suppressions() {
    return "thread:StartCallbacks\n";
}
#endif

int main(int argc, char** argv) {
    return argc == 2 ? vorlund::test::Run(argv[1]) : 64;
}
