// Threads that will be interrupted are on their own: nobody joins them by name. Each one joins, as the last
// thing it does, the one that ended before it, which is as good as gone. So at most one is left over, and at
// its end the library can wait until the last instruction of the last one has run; being told would not do,
// because the code may be gone before the teller has left it.
#include "vorlund/system/PlainLock.h"
#include "vorlund/system/Thread_linux.h"
#include "vorlund/system/WaitThread.h"
#include "vorlund/system/Waits_posix.h"

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
/// counted it. And those who wait for their ends.
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
    endedLock.Lock();
    const TEnded ended = std::exchange(lastEnded, next);
    endedLock.Unlock();
    if (ended.isThere) pthread_join(ended.id, nullptr);
}

void LeaveInside() {
    // In one order with the end: either it sees the new number, or it is seen.
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
    const std::int64_t deadline = MonotonicNanoseconds() + std::int64_t{kLongestPause} * 1000000;
    pausing.fetch_add(1);
    for (;;) {
        const std::uint32_t ending = threadsEnding;
        if (static_cast<std::int32_t>(ending) <= kManyEnding || MonotonicNanoseconds() >= deadline) break;
        ParkWhileUntil(threadsEnding, ending, deadline);
    }
    pausing.fetch_sub(1);
}

/// Such a thread only ends after it has been interrupted.
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
    // The thread itself never reads its id here.
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
    const bool areMany = static_cast<std::int32_t>(threadsEnding.fetch_add(1)) >= kManyEnding;
    Raise(thread->interrupt);
    Drop(thread);
    if (areMany) PauseWhileManyEnd();
}

void Join(TThreadHandle thread) noexcept {
    pthread_join(thread->id, nullptr);
    Drop(thread);
}

std::uint32_t WaitInterruptibly(std::uint32_t count, const TEventHandle* events, bool isForAll) noexcept {
    if (count == 0 || count > kMostEvents) return kFailed;
    return WaitUnlessRaised(self->interrupt, count, events, isForAll);
}

void SleepInterruptibly() noexcept {
    WaitUnlessRaised(self->interrupt, 0, nullptr, false);
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
