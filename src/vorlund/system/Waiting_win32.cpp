#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/system/Thread.h"
#include "vorlund/system/Waiting.h"

#include <new>

namespace vorlund::waiting {

/// One thread of a thread pool, on which watches call. The system waits for their events with a thread of its
/// own for every 63, or with fewer on newer versions.
struct TWatcher {
    PTP_POOL pool;
    TP_CALLBACK_ENVIRON environment;
};

struct TWatch {
    PTP_WAIT wait;
    HANDLE event;
    TSignalled signalled;
    void* argument;
};

static_assert(kTimeout == WAIT_TIMEOUT && kFailed == WAIT_FAILED);
static_assert(kForever == INFINITE && kMaxEvents == MAXIMUM_WAIT_OBJECTS);

namespace {

HANDLE HandleOf(TEventHandle event) {
    return reinterpret_cast<HANDLE>(event);
}

void CALLBACK OnSignalled(PTP_CALLBACK_INSTANCE, void* argument, PTP_WAIT, TP_WAIT_RESULT) {
    const TWatch& watch = *static_cast<TWatch*>(argument);
    if (const void* const address = watch.signalled(watch.argument)) UnparkOne(address);
}

} // namespace

TEventHandle Create() noexcept {
    return reinterpret_cast<TEventHandle>(CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

TEventHandle Duplicate(TEventHandle event) noexcept {
    const HANDLE process = GetCurrentProcess();
    HANDLE duplicate = nullptr;
    if (event)
        DuplicateHandle(process, HandleOf(event), process, &duplicate, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return reinterpret_cast<TEventHandle>(duplicate);
}

void Close(TEventHandle event) noexcept {
    if (event) CloseHandle(HandleOf(event));
}

void Set(TEventHandle event) noexcept {
    SetEvent(HandleOf(event));
}

void Reset(TEventHandle event) noexcept {
    ResetEvent(HandleOf(event));
}

bool IsSet(TEventHandle event) noexcept {
    return WaitForSingleObject(HandleOf(event), 0) == WAIT_OBJECT_0;
}

std::uint32_t Wait(TEventHandle event, std::uint32_t milliseconds) noexcept {
    return WaitForSingleObject(HandleOf(event), milliseconds);
}

std::uint32_t WaitForSeveral(std::uint32_t count, const TEventHandle* events, bool isForAll,
                             std::uint32_t milliseconds) noexcept {
    const DWORD result =
        WaitForMultipleObjects(count, reinterpret_cast<const HANDLE*>(events), isForAll, milliseconds);
    return isForAll && result < count ? 0 : result;
}

TWatcherHandle StartWatcher() noexcept {
    auto* const watcher = new (std::nothrow) TWatcher{CreateThreadpool(nullptr), {}};
    if (watcher && watcher->pool && SetThreadpoolThreadMinimum(watcher->pool, 1)) {
        SetThreadpoolThreadMaximum(watcher->pool, 1);
        InitializeThreadpoolEnvironment(&watcher->environment);
        SetThreadpoolCallbackPool(&watcher->environment, watcher->pool);
        return watcher;
    }
    if (watcher && watcher->pool) CloseThreadpool(watcher->pool);
    delete watcher;
    return nullptr;
}

void EndWatcher(TWatcherHandle watcher) noexcept {
    if (!watcher) return;
    DestroyThreadpoolEnvironment(&watcher->environment);
    CloseThreadpool(watcher->pool);
    delete watcher;
}

TWatchHandle StartWatch(TWatcherHandle watcher, TEventHandle event, TSignalled signalled,
                        void* argument) noexcept {
    if (!watcher || !event) return nullptr;
    auto* const watch = new (std::nothrow) TWatch{nullptr, HandleOf(event), signalled, argument};
    if (!watch) return nullptr;
    watch->wait = CreateThreadpoolWait(&OnSignalled, watch, &watcher->environment);
    if (watch->wait) return watch;
    delete watch;
    return nullptr;
}

bool Arm(TWatchHandle watch) noexcept {
    if (watch) SetThreadpoolWait(watch->wait, watch->event, nullptr);
    return false;
}

void EndWatch(TWatchHandle watch) noexcept {
    if (!watch) return;
    SetThreadpoolWait(watch->wait, nullptr, nullptr);
    WaitForThreadpoolWaitCallbacks(watch->wait, TRUE);
    CloseThreadpoolWait(watch->wait);
    delete watch;
}

} // namespace vorlund::waiting
