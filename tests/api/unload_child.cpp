// The child program of the unloading tests: not linked to the library, it loads and unloads it at run time,
// in the state that its argument names.
#include "api/unload_child.h"

#include "system/ProcessResources.h"

#include <vorlund/Event.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>

namespace vorlund::test {
namespace {

[[noreturn]] void Fail(int code) {
    std::_Exit(code);
}

/// The library for the length of a block.
class CLibrary {
public:
    CLibrary() : module_(LoadModule("unload_client")) {
        if (!module_) Fail(2);
        Find<void()>("UnloadClientListen")();
    }
    CLibrary(const CLibrary&) = delete;
    CLibrary& operator=(const CLibrary&) = delete;
    ~CLibrary() {
        if (!UnloadModule(module_)) Fail(3);
        // Otherwise the end of the process would be what is tested. Threads that are about to end may keep
        // the library for a moment.
        for (int wait = 0; IsLoaded("vorlund"); ++wait) {
            if (wait == 1000) Fail(4);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    void Open() {
        if (Find<int()>("UnloadClientOpen")() != 1) Fail(5);
    }
    void Close() { Do("UnloadClientClose"); }
    void Do(const char* name) { Find<void()>(name)(); }

    template <class TFunction> TFunction* Find(const char* name) {
        auto* const function = FindFunction(module_, name);
        if (!function) Fail(6);
        return reinterpret_cast<TFunction*>(function);
    }

private:
    void* module_;
};

/// Threads before anything is done. A sanitizer starts one of its own with the first.
int CountThreadsAtRest() {
    std::thread([] {}).join();
    return CountThreads();
}

std::atomic<bool> isInside{false};
std::atomic<bool> mayLeave{false};

bool IsInside() {
    return isInside;
}

void StayInside() {
    isInside = true;
    while (!mayLeave) std::this_thread::yield();
}

void StayInsideCallback(CEvent::TAsyncCbData&) {
    StayInside();
}

/// Unloads the library while a callback runs, which returns only when the library has gone, or cannot be seen
/// to go. `start` is the function of the client that enters it.
template <class TCallback> int UnloadDuring(TCallback* callback, const char* start) {
    const int threads = CountThreadsAtRest();
    std::thread leave;
    {
        CLibrary library;
        library.Find<void(TCallback*, bool (*)())>(start)(callback, &IsInside);
        leave = std::thread([] {
            const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
            while (IsLoaded("vorlund") && std::chrono::steady_clock::now() < limit) std::this_thread::yield();
            mayLeave = true;
        });
    }
    leave.join();
    // The callback's thread has survived its return.
    return ThreadsComeDownTo(threads) ? 0 : 9;
}

/// Unloads a module with static objects again and again, while another one uses the library, which stays.
int UnloadBesideOthers() {
    const int threads = CountThreadsAtRest();
    {
        CLibrary library;
        std::atomic<bool> isEnding{false};
        std::thread others([&] {
            while (!isEnding) library.Do("UnloadClientUseEvents");
        });
        for (int life = 0; life < 50; ++life) {
            void* const module = LoadModule("unload_client_too");
            for (const char* const name :
                 {"UnloadClientStartStaticTimer", "UnloadClientWaitForStaticEvent"}) {
                auto* const start = FindFunction(module, name);
                if (!start) Fail(6);
                start();
            }
            if (!UnloadModule(module)) Fail(3);
        }
        isEnding = true;
        others.join();
    }
    return ThreadsComeDownTo(threads) ? 0 : 9;
}

int Run(std::string_view mode) {
    if (IsLoaded("vorlund")) return 7;
    if (mode == "with-waits") {
        // Running waits may keep the library; what matters is that nothing of it is used when it has gone.
        void* const module = LoadModule("unload_client");
        const auto start = FindFunction(module, "UnloadClientStartWaits");
        if (!start) return 2;
        start();
        return UnloadModule(module) ? 0 : 3;
    }
    if (mode == "inside-callback") return UnloadDuring(&StayInsideCallback, "UnloadClientStopInsideCallback");
    if (mode == "inside-own-callback") return UnloadDuring(&StayInside, "UnloadClientStopInsideOwnCallback");
    if (mode == "inside-callback-at-exit") {
        // Never unloaded, and the callback never returns.
        static CLibrary* const library = new CLibrary;
        library->Find<void(void (*)(CEvent::TAsyncCbData&), bool (*)())>("UnloadClientStopInsideCallback")(
            &StayInsideCallback, &IsInside);
        return 0;
    }
    if (mode == "static-objects-beside-others") return UnloadBesideOthers();
    if (mode == "static-timer-at-exit") {
        static CLibrary* const library = new CLibrary;
        library->Do("UnloadClientRunStaticTimer");
        return 0;
    }
    if (mode == "static-timers") {
        const int threads = CountThreadsAtRest();
        for (int life = 0; life < 40; ++life)
            CLibrary().Do(life % 2 ? "UnloadClientStartStaticTimer" : "UnloadClientRunStaticTimer");
        return ThreadsComeDownTo(threads) ? 0 : 9;
    }
    if (mode == "open-in-a-second-life") {
        CLibrary first;
        first.Open();
        first.Close();
    }
    {
        CLibrary library;
        if (!IsLoaded("vorlund")) return 8;
        if (mode == "timer-alive") library.Do("UnloadClientStartTimer");
        if (mode == "events-used") library.Do("UnloadClientUseEvents");
        if (mode == "open" || mode == "closed" || mode == "open-in-a-second-life") library.Open();
        if (mode == "closed") library.Close();
    }
    return 0;
}

} // namespace
} // namespace vorlund::test

int main(int argc, char** argv) {
    return argc == 2 ? vorlund::test::Run(argv[1]) : 64;
}
