// Unloading the library waits for its threads: the code that they run, callbacks included, is unmapped only
// after the library's static objects have been destroyed. A message from a thread would not be enough,
// because the code could go before the thread has left it. So each thread that ends joins the one that ended
// before it, and the library joins the last one (AsyncWaits.cpp).
//
// The end of a process destroys static objects too, but unmaps nothing, and a callback may never return. So
// it is marked: what is called at the end of a process is called in the reverse order of its registration,
// and the mark is registered after the library's own objects.
#include "vorlund/system/Thread_posix.h"
#include "vorlund/system/WaitThread.h"
#include "vorlund/system/Waiting_posix.h"

#include <cxxabi.h>
#include <new>
#include <pthread.h>

namespace vorlund::waiting {

struct TThread {
    void (*const run)(void*);
    void* const argument;
    pthread_t id{};
    TInterrupt interrupt{kInterrupted};
};

struct TWork {
    void (*const run)(void*);
    void* const argument;
    pthread_t id{};
};

namespace {

/// The calling thread, when this library started it for a wait.
thread_local TThread* self = nullptr;

/// Interruptible threads, and those of them that are in no callback.
constinit std::atomic<std::uint32_t> threads{0};
constinit std::atomic<std::uint32_t> threadsInside{0};
constinit std::atomic<bool> isEnding{false};

/// The mark, and at the same time the name under which it is registered: not that of the library, whose
/// functions are called when it is unloaded.
constinit std::atomic<bool> isProcessEnding{false};
constinit std::atomic<bool> isMarkSet{false};

void NoteProcessEnd(void*) {
    isProcessEnding = true;
}

void SetMark() {
    if (!isMarkSet.exchange(true)) abi::__cxa_atexit(&NoteProcessEnd, nullptr, &isProcessEnding);
}

/// Calls it too.
void RemoveMark() {
    if (isMarkSet) abi::__cxa_finalize(&isProcessEnding);
}

void CountDown(std::atomic<std::uint32_t>& count) {
    // Sequentially consistent, as in AwaitInterrupted: either that sees the new number, or this sees that it
    // waits.
    count.fetch_sub(1);
    if (isEnding) UnparkOne(&count);
}

void AwaitNone(const std::atomic<std::uint32_t>& count) {
    while (const std::uint32_t present = count) ParkWhile(count, present);
}

void CountOut() {
    CountDown(threadsInside);
    CountDown(threads);
}

void* RunInterruptible(void* argument) {
    self = static_cast<TThread*>(argument);
    self->run(self->argument);
    CountOut();
    return nullptr;
}

void* RunWork(void* argument) {
    const TWork& work = *static_cast<TWork*>(argument);
    work.run(work.argument);
    return nullptr;
}

/// Null when there is no memory or no thread. The thread may run before `id` is written, and never reads it.
template <class TStarted> TStarted* Start(void* (*enter)(void*), void (*run)(void*), void* argument) {
    auto* const started = new (std::nothrow) TStarted{run, argument};
    if (!started) return nullptr;
    if (pthread_create(&started->id, nullptr, enter, started) == 0) return started;
    delete started;
    return nullptr;
}

} // namespace

CLibraryHold::CLibraryHold() noexcept = default;

CLibraryHold::~CLibraryHold() = default;

TThreadHandle StartInterruptible(void (*run)(void*), void* argument, CLibraryHold&) noexcept {
    SetMark();
    threads.fetch_add(1, std::memory_order_relaxed);
    threadsInside.fetch_add(1, std::memory_order_relaxed);
    TThread* const thread = Start<TThread>(&RunInterruptible, run, argument);
    if (!thread) CountOut();
    return thread;
}

void Interrupt(TThreadHandle thread) noexcept {
    EndWait(thread->interrupt);
}

void Join(TThreadHandle thread) noexcept {
    pthread_join(thread->id, nullptr);
    delete thread;
}

std::uint32_t WaitInterruptibly(std::uint32_t count, const TEventHandle* events, bool isForAll) noexcept {
    if (count == 0 || count > kMaxEvents) return kFailed;
    return WaitUnlessEnded(self->interrupt, count, events, isForAll, kForever);
}

bool SleepInterruptibly(std::uint32_t milliseconds) noexcept {
    return WaitUnlessEnded(self->interrupt, 0, nullptr, false, milliseconds) != kTimeout;
}

void EnterCallback() noexcept {
    CountDown(threadsInside);
}

void LeaveCallback() noexcept {
    threadsInside.fetch_add(1, std::memory_order_relaxed);
}

void AwaitInterrupted() noexcept {
    isEnding = true;
    const bool isUnloading = !isProcessEnding;
    AwaitNone(isUnloading ? threads : threadsInside);
    if (isUnloading) RemoveMark();
}

void JoinLast(TThreadHandle thread) noexcept {
    if (thread) Join(thread);
}

TWorkHandle StartWork(void (*run)(void*), void* argument) noexcept {
    return Start<TWork>(&RunWork, run, argument);
}

void EndWork(TWorkHandle work) noexcept {
    pthread_join(work->id, nullptr);
    delete work;
}

bool IsThreadLast() noexcept {
    return false;
}

} // namespace vorlund::waiting
