// A module that uses the library, as a plug-in host's module would: loading it loads the library, unloading
// it unloads the library.
#include "support/ChildReports.h"
#include "support/Leaks.h"

#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Timer.h>
#include <vorlund/Vorlund.h>

#include <thread>

extern "C" {

/// Sends the library's reports to the standard output. The handler lies in this module, which is still there
/// while the library ends.
void UnloadClientListen() {
    vorlund::test::SendReportsToParent();
}

/// Opens the library; returns the number of the first object, which is 1 in every life of the library.
int UnloadClientOpen() {
    vorlund::v.Init();
    return vorlund::CreateAs<vorlund::IObject>(vorlund::classid::CObject)->GetObjectNumber();
}

/// Starts a timer that is never stopped, and waits until it has been set, so that the timers' thread runs.
void UnloadClientStartTimer() {
    auto* const timer = new vorlund::CTimer(0.001f);
    timer->Start();
    timer->Wait();
}

/// Starts a timer that is a static object of this module: it runs until the module is unloaded.
void UnloadClientStartStaticTimer() {
    static vorlund::CTimer timer(0.001f);
    timer.Start();
}

/// The same, and waits until it has been set, so that the timers' thread runs.
void UnloadClientRunStaticTimer() {
    static vorlund::CTimer timer(0.001f);
    timer.Start();
    timer.Wait();
}

/// Waits asynchronously for a static object of this module, until the module is unloaded.
void UnloadClientWaitForStaticEvent() {
    static vorlund::CEvent event;
    event.WaitAsync([](vorlund::CEvent::TAsyncCbData&) {}, nullptr);
}

/// Starts an asynchronous wait that calls at once, waits until it is `inside`, and stops it.
void UnloadClientStopInsideCallback(void (*callback)(vorlund::CEvent::TAsyncCbData&), bool (*isInside)()) {
    vorlund::CEvent event;
    event.SetState(true);
    event.WaitAsync(callback, nullptr);
    while (!isInside()) std::this_thread::yield();
}

/// The same with a callback of this module, which calls `act`.
void UnloadClientStopInsideOwnCallback(void (*act)(), bool (*isInside)()) {
    vorlund::CEvent event;
    event.SetState(true);
    event.WaitAsync(
        [](vorlund::CEvent::TAsyncCbData& data) { (*reinterpret_cast<void (**)()>(data.userData))(); }, &act);
    while (!isInside()) std::this_thread::yield();
}

/// Runs a timer and asynchronous waits to their ends.
void UnloadClientUseEvents() {
    vorlund::CTimer timer(0.001f);
    vorlund::CEvent never;
    vorlund::CEvent called;
    timer.WaitAsync(
        [](vorlund::CEvent::TAsyncCbData& data) {
            static_cast<vorlund::CEvent*>(data.userData)->SetState(true);
            vorlund::CEvent::StopAsync(data.handle);
        },
        &called);
    never.WaitAsync([](vorlund::CEvent::TAsyncCbData&) {}, nullptr);
    timer.Start();
    called.Wait();
    timer.Stop();
}

/// Starts asynchronous waits that are never stopped and never satisfied.
void UnloadClientStartWaits() {
    const vorlund::test::CExpectedLeak leak;
    for (int wait = 0; wait < 3; ++wait)
        (new vorlund::CEvent)->WaitAsync([](vorlund::CEvent::TAsyncCbData&) {}, nullptr);
}

void UnloadClientClose() {
    vorlund::v.Close();
}
}
