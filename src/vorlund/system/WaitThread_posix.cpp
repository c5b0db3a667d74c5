// Nobody who starts a thread that will be interrupted joins it. Instead each such thread, as the last thing
// it does, joins the one that ended before it. So at most one is not joined, and the library joins that one
// at its end: then the last instruction of the last thread has run. A message from the thread would not be
// enough, because the code could be unloaded before the thread has left it.
#include "vorlund/system/PlainLock.h"
#include "vorlund/system/Thread_posix.h"
#include "vorlund/system/WaitThread.h"
#include "vorlund/system/Waiting_posix.h"

#include <new>
#include <pthread.h>
#include <utility>

namespace vorlund::waiting {

/// Freed by the thread and by whoever holds its handle, whichever is last.
struct TThread {
    void (*const run)(void*);
    void* const argument;
    std::atomic<std::uint32_t> references{2};
    pthread_t id{};
    TInterrupt interrupt{kInterrupted};
};

namespace {

/// The calling thread, when this library started it.
thread_local TThread* self = nullptr;

/// Interruptible threads that are in no callback.
constinit std::atomic<std::uint32_t> threadsInside{0};
constinit std::atomic<bool> isEnding{false};

/// Interrupted threads that have not ended; for a moment below 0 when one ends before its interrupter has
/// counted it. And how many threads wait for them to end.
constinit std::atomic<std::uint32_t> threadsEnding{0};
constinit std::atomic<std::uint32_t> pausing{0};

/// An ended thread that nobody has joined yet.
struct TEnded {
    pthread_t id;
    bool isThere;
};
constinit CPlainLock endedLock;
constinit TEnded lastEnded{};

void Drop(TThread* thread) {
    if (thread->references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete thread;
}

void JoinEnded(TEnded next) {
    TEnded ended;
    {
        const CPlainLockGuard guard(endedLock);
        ended = std::exchange(lastEnded, next);
    }
    if (ended.isThere) pthread_join(ended.id, nullptr);
}

void LeaveInside() {
    // Sequentially consistent, as in AwaitInterrupted: either that sees the new number, or this sees that it
    // waits.
    threadsInside.fetch_sub(1);
    if (isEnding) UnparkOne(&threadsInside);
}

void* RunJoinable(void* argument) {
    TThread* const thread = static_cast<TThread*>(argument);
    thread->run(thread->argument);
    Drop(thread);
    return nullptr;
}

void PauseWhileManyEnd() {
    const std::int64_t deadline = MonotonicNanoseconds() + std::int64_t{kMaxPauseMilliseconds} * 1000000;
    pausing.fetch_add(1);
    for (;;) {
        const std::uint32_t ending = threadsEnding;
        if (static_cast<std::int32_t>(ending) <= kMaxThreadsEnding || MonotonicNanoseconds() >= deadline)
            break;
        ParkWhileUntil(threadsEnding, ending, deadline);
    }
    pausing.fetch_sub(1);
}

/// Returns only after the thread has been interrupted.
void* RunInterruptible(void* argument) {
    self = static_cast<TThread*>(argument);
    RunJoinable(argument);
    JoinEnded({pthread_self(), true});
    threadsEnding.fetch_sub(1);
    if (pausing > 0) UnparkOne(&threadsEnding);
    LeaveInside();
    return nullptr;
}

TThread* Start(void* (*enter)(void*), void (*run)(void*), void* argument) {
    auto* const thread = new (std::nothrow) TThread{run, argument};
    if (!thread) return nullptr;
    // The thread may run before `id` is written, and never reads it.
    if (pthread_create(&thread->id, nullptr, enter, thread) == 0) return thread;
    delete thread;
    return nullptr;
}

} // namespace

TThreadHandle StartInterruptible(void (*run)(void*), void* argument) noexcept {
    threadsInside.fetch_add(1, std::memory_order_relaxed);
    TThread* const thread = Start(&RunInterruptible, run, argument);
    if (!thread) LeaveInside();
    return thread;
}

TThreadHandle StartJoinable(void (*run)(void*), void* argument) noexcept {
    return Start(&RunJoinable, run, argument);
}

void Interrupt(TThreadHandle thread) noexcept {
    const bool areMany = static_cast<std::int32_t>(threadsEnding.fetch_add(1)) >= kMaxThreadsEnding;
    EndWaits(thread->interrupt);
    Drop(thread);
    if (areMany) PauseWhileManyEnd();
}

void Join(TThreadHandle thread) noexcept {
    pthread_join(thread->id, nullptr);
    Drop(thread);
}

std::uint32_t WaitInterruptibly(std::uint32_t count, const TEventHandle* events, bool isForAll) noexcept {
    if (count == 0 || count > kMaxEvents) return kFailed;
    return WaitUnlessEnded(self->interrupt, count, events, isForAll);
}

void SleepInterruptibly() noexcept {
    WaitUnlessEnded(self->interrupt, 0, nullptr, false);
}

void EnterCallback() noexcept {
    LeaveInside();
}

void LeaveCallback() noexcept {
    threadsInside.fetch_add(1, std::memory_order_relaxed);
}

void AwaitInterrupted() noexcept {
    isEnding = true;
    while (const std::uint32_t inside = threadsInside) ParkWhile(threadsInside, inside);
    JoinEnded({});
}

bool IsThreadLast() noexcept {
    return false;
}

} // namespace vorlund::waiting
