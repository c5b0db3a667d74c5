// A thread is interrupted by an asynchronous procedure call, which ends the alertable wait that it is in or
// the next one that it enters. An event for that among those waited for would take one of the 64 places, and
// could not end a wait for all.
//
// A thread that will be interrupted holds a reference to the library, from before it is made until the system
// ends it, so the library is never unloaded while it runs. To wait for it during the unloading is impossible:
// the system lets no thread begin or end then.
//
// The timers' thread holds none, because the library may be unloaded while timers run and then says so. It is
// also ended by destructors of static objects while a library is unloaded, so nobody waits for its end. It is
// the one thread of a thread pool: the pool takes back work that has not begun, and tells when the thread has
// returned from ours into the system's code, from where it ends when it can.
#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/system/ProcessEnd_win32.h"
#include "vorlund/system/WaitThread.h"

#include <cstdlib>
#include <new>

namespace vorlund::waiting {

static_assert(kInterrupted == WAIT_IO_COMPLETION);

struct TWork {
    void (*const run)(void*);
    void* const argument;
    PTP_POOL pool = nullptr;
    PTP_WORK work = nullptr;
};

namespace {

bool isThreadLast = false;
BOOLEAN(WINAPI* isProcessEnding)() = nullptr;

/// What a new thread is told; the thread frees it.
struct TStart {
    void (*run)(void*);
    void* argument;
    HMODULE module; ///< a reference to the library
};

/// Ends by a call that does not return: only the system can end a thread whose code is unloaded with it.
DWORD WINAPI RunThread(void* argument) {
    const TStart start = *static_cast<TStart*>(argument);
    std::free(argument);
    start.run(start.argument);
    FreeLibraryAndExitThread(start.module, 0);
    return 0;
}

void CALLBACK RunWork(PTP_CALLBACK_INSTANCE, void* argument, PTP_WORK) {
    const TWork& work = *static_cast<TWork*>(argument);
    work.run(work.argument);
}

void CALLBACK DoNothing(ULONG_PTR) {}

HANDLE HandleOf(TThreadHandle thread) {
    return reinterpret_cast<HANDLE>(thread);
}

void Close(TWork* work) {
    if (work->work) CloseThreadpoolWork(work->work);
    if (work->pool) CloseThreadpool(work->pool);
    delete work;
}

} // namespace

CLibraryHold::CLibraryHold() noexcept {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&RunThread),
                       &module);
    module_ = module;
}

CLibraryHold::~CLibraryHold() {
    if (module_) FreeLibrary(static_cast<HMODULE>(module_));
}

TThreadHandle StartInterruptible(void (*run)(void*), void* argument, CLibraryHold& hold) noexcept {
    if (!hold.module_) return nullptr;
    auto* const start = static_cast<TStart*>(std::malloc(sizeof(TStart)));
    if (!start) return nullptr;
    *start = {run, argument, static_cast<HMODULE>(hold.module_)};
    const HANDLE thread = CreateThread(nullptr, 0, &RunThread, start, 0, nullptr);
    if (thread)
        hold.module_ = nullptr;
    else
        std::free(start);
    return reinterpret_cast<TThreadHandle>(thread);
}

void Interrupt(TThreadHandle thread) noexcept {
    QueueUserAPC(&DoNothing, HandleOf(thread), 0);
}

void Join(TThreadHandle thread) noexcept {
    WaitForSingleObject(HandleOf(thread), INFINITE);
    CloseHandle(HandleOf(thread));
}

std::uint32_t WaitInterruptibly(std::uint32_t count, const TEventHandle* events, bool isForAll) noexcept {
    return WaitForMultipleObjectsEx(count, reinterpret_cast<const HANDLE*>(events), isForAll, INFINITE, TRUE);
}

bool SleepInterruptibly(std::uint32_t milliseconds) noexcept {
    return SleepEx(milliseconds, TRUE) != 0;
}

void EnterCallback() noexcept {}

void LeaveCallback() noexcept {}

// When the library ends before the process does, no such thread is left: each kept it loaded.
void AwaitInterrupted() noexcept {}

// It may be the calling thread, which unloads the library with its last step.
void JoinLast(TThreadHandle thread) noexcept {
    if (thread) CloseHandle(HandleOf(thread));
}

TWorkHandle StartWork(void (*run)(void*), void* argument) noexcept {
    auto* const work = new (std::nothrow) TWork{run, argument};
    if (!work) return nullptr;
    work->pool = CreateThreadpool(nullptr);
    if (work->pool && SetThreadpoolThreadMinimum(work->pool, 1)) {
        SetThreadpoolThreadMaximum(work->pool, 1);
        TP_CALLBACK_ENVIRON environment;
        InitializeThreadpoolEnvironment(&environment);
        SetThreadpoolCallbackPool(&environment, work->pool);
        work->work = CreateThreadpoolWork(&RunWork, work, &environment);
        DestroyThreadpoolEnvironment(&environment);
    }
    if (work->work) {
        SubmitThreadpoolWork(work->work);
        return work;
    }
    Close(work);
    return nullptr;
}

void EndWork(TWorkHandle work) noexcept {
    WaitForThreadpoolWorkCallbacks(work->work, TRUE);
    Close(work);
}

bool IsThreadLast() noexcept {
    return isThreadLast || (isProcessEnding && isProcessEnding());
}

void NoteThreadIsLast() noexcept {
    isThreadLast = true;
}

void FindProcessEnd() noexcept {
    const FARPROC function = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress");
    isProcessEnding = reinterpret_cast<BOOLEAN(WINAPI*)()>(reinterpret_cast<void (*)()>(function));
}

} // namespace vorlund::waiting
