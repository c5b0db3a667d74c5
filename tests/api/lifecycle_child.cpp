// The child program of the life cycle's tests: ends as an application ends, in the state that its argument
// names.
#include "support/ChildReports.h"
#include "support/EndProcess.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace vorlund::test {
namespace {

constexpr CId kRefusingId{0xC41D, 0, 0, 1};

[[noreturn]] IObject* Refuse() {
    throw std::runtime_error("factory");
}

/// Lets a factory raise on the calling thread, which then holds the store's lock.
void LeaveTheLock(CClassStore& store) {
    try {
        store.CreateObject(kRefusingId);
    } catch (const std::runtime_error&) {
    }
}

/// An open store that need not be destroyed: it is left locked, and not `v`'s, whose end would be reported.
CClassStore& MakeStore() {
    auto& store = *new CClassStore;
    store.Init();
    store.RegisterClassVrl({kRefusingId, VRL_L("test::CRefusing"), &Refuse});
    return store;
}

/// An object of the application that hears the library's messages and ends with the application's other
/// static objects.
class CListener {
public:
    CListener() = default;
    CListener(const CListener&) = delete;
    CListener& operator=(const CListener&) = delete;
    ~CListener() {
        hasEnded_ = true;
        WriteLine("listener", "ended");
    }

    static void OnMessage(TDebugMessageType, const wchar*, void* user) {
        const bool hasEnded = static_cast<const CListener*>(user)->hasEnded_;
        WriteLine("listener", hasEnded ? "called after its end" : "called");
    }

private:
    volatile bool hasEnded_ = false;
};

CListener& TheListener() {
    static CListener listener;
    return listener;
}

/// Tells whether `act` comes to its end on another thread. What is blocked stays blocked, so the process must
/// be left without its end.
template <class TAct> void ReportEnd(const char* name, TAct act) {
    std::atomic<bool> hasEnded = false;
    std::thread thread([&] {
        act();
        hasEnded = true;
    });
    // An act that is not blocked has ended long before; one that is blocked never ends.
    const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
    while (!hasEnded && std::chrono::steady_clock::now() < limit)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    WriteLine(name, hasEnded ? "went on" : "is blocked");
    if (!hasEnded) EndProcess(0);
    // Whole: a thread that begins while a detached one ends may never run on Windows (winpthreads 10).
    thread.join();
}

int Run(std::string_view mode) {
    if (mode == "handler-of-a-static-object") {
        for (const TDebugMessageType type : {DEBUG_MESSAGE_OUTPUT, DEBUG_MESSAGE_BOX})
            CDebug::SetHandler(type, &CListener::OnMessage, &TheListener());
        CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("while it lives"));
        v.Init();
        return 0;
    }
    SendReportsToParent();
    if (mode == "never-opened") return 0;
    if (mode == "counter-open") {
        v.GetClassStore().Init();
        v.GetCodecClassStore().Init();
        v.GetObjectCounter().Init();
        return 0;
    }
    if (mode == "codec-store-open") {
        v.GetClassStore().Init();
        v.GetCodecClassStore().Init();
        return 0;
    }
    if (mode == "device-store-open") {
        v.GetDeviceClassStore().Init();
        return 0;
    }
    if (mode == "class-store-open") {
        v.GetClassStore().Init();
        return 0;
    }

    if (mode == "lock-left-to-others") {
        CClassStore& store = MakeStore();
        ReportEnd("before", [&] { store.GetClassInfo(kRefusingId); });
        LeaveTheLock(store);
        store.GetClassInfo(kRefusingId);
        WriteLine("this", "went on");
        ReportEnd("other", [&] { store.GetClassInfo(kRefusingId); });
        return 1;
    }
    if (mode == "lock-of-an-ended-thread") {
        CClassStore& store = MakeStore();
        std::thread([&] { LeaveTheLock(store); }).join();
        ReportEnd("close", [&] {
            try {
                store.Close();
            } catch (const CBugException&) {
                WriteLine("close", "raised");
            }
        });
        delete &store;
        return 0;
    }

    if (mode == "device-lock-left-to-others") {
        v.Init();
        auto& store = *new CDeviceClassStore;
        store.Init();
        const auto registerDevice = [&] { store.RegisterDevice({classid::CDevice, DEVICE_TYPE_AUDIO}); };
        ReportEnd("before", registerDevice);
        try {
            store.CreateDevice(DEVICE_TYPE_VIDEO);
        } catch (const CClassNotFoundException&) {
            WriteLine("creation", "failed");
        }
        registerDevice();
        WriteLine("this", "went on");
        ReportEnd("other", registerDevice);
        return 1;
    }

    v.Init();
    if (mode == "open-at-return") return 0;
    if (mode == "open-at-exit") std::exit(0);
    if (mode == "open-with-objects") {
        auto object = CreateAs<IObject>(classid::CObject);
        (void)object.Detach();
        return 0;
    }
    v.Close();
    if (mode == "closed") return 0;
    v.Init();
    if (mode == "open-again") return 0;
    v.Close();
    return mode == "closed-again" ? 0 : 64;
}

} // namespace
} // namespace vorlund::test

int main(int argc, char** argv) {
    return argc == 2 ? vorlund::test::Run(argv[1]) : 64;
}
