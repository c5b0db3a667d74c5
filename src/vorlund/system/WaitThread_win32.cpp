// A thread is interrupted by an asynchronous procedure call, which ends the alertable wait that it is in or
// the next one that it enters. An event for that among those waited for would take one of the 64 places, and
// could not end a wait for all.
//
// A thread that will be interrupted holds a reference to the library, from before it is made until the system
// ends it, so the library is never unloaded while it runs. To wait for it during the unloading is impossible:
// the system lets no thread begin or end then.
#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/system/ProcessEnd_win32.h"
#include "vorlund/system/WaitThread.h"

#include <atomic>
#include <cstdlib>

namespace vorlund::waiting {

static_assert(kInterrupted == WAIT_IO_COMPLETION);

namespace {

bool isThreadLast = false;

/// Interrupted threads that have not ended; for a moment below 0 when one ends before its interrupter has
/// counted it.
constinit std::atomic<std::int32_t> threadsEnding{0};

/// What a new thread is told; the thread frees it.
struct TStart {
    void (*run)(void*);
    void* argument;
    HMODULE module; ///< a reference to the library, or null
};

/// Ends by a call that does not return: only the system can end a thread whose code is unloaded with it.
DWORD WINAPI RunThread(void* argument) {
    const TStart start = *static_cast<TStart*>(argument);
    std::free(argument);
    start.run(start.argument);
    if (!start.module) return 0;
    // With a reference: a thread that ends only after it has been interrupted.
    threadsEnding.fetch_sub(1);
    FreeLibraryAndExitThread(start.module, 0);
    return 0;
}

TThreadHandle Start(void (*run)(void*), void* argument, HMODULE module) {
    auto* const start = static_cast<TStart*>(std::malloc(sizeof(TStart)));
    if (!start) return nullptr;
    *start = {run, argument, module};
    const HANDLE thread = CreateThread(nullptr, 0, &RunThread, start, 0, nullptr);
    if (!thread) std::free(start);
    return reinterpret_cast<TThreadHandle>(thread);
}

void CALLBACK DoNothing(ULONG_PTR) {}

} // namespace

TThreadHandle StartInterruptible(void (*run)(void*), void* argument) noexcept {
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&RunThread),
                            &module))
        return nullptr;
    const TThreadHandle thread = Start(run, argument, module);
    if (!thread) FreeLibrary(module);
    return thread;
}

TThreadHandle StartJoinable(void (*run)(void*), void* argument) noexcept {
    return Start(run, argument, nullptr);
}

void Interrupt(TThreadHandle thread) noexcept {
    const HANDLE handle = reinterpret_cast<HANDLE>(thread);
    threadsEnding.fetch_add(1);
    QueueUserAPC(&DoNothing, handle, 0);
    CloseHandle(handle);
    for (DWORD pause = 0; threadsEnding > kMaxThreadsEnding && pause < kMaxPauseMilliseconds; ++pause)
        Sleep(1);
}

void Join(TThreadHandle thread) noexcept {
    const HANDLE handle = reinterpret_cast<HANDLE>(thread);
    WaitForSingleObject(handle, INFINITE);
    CloseHandle(handle);
}

std::uint32_t WaitInterruptibly(std::uint32_t count, const TEventHandle* events, bool isForAll) noexcept {
    return WaitForMultipleObjectsEx(count, reinterpret_cast<const HANDLE*>(events), isForAll, INFINITE, TRUE);
}

void SleepInterruptibly() noexcept {
    SleepEx(INFINITE, TRUE);
}

void EnterCallback() noexcept {}

void LeaveCallback() noexcept {}

// When the library ends before the process does, no such thread is left: each kept it loaded.
void AwaitInterrupted() noexcept {}

bool IsThreadLast() noexcept {
    return isThreadLast;
}

void NoteThreadIsLast() noexcept {
    isThreadLast = true;
}

} // namespace vorlund::waiting
