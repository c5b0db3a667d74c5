// One thread serves all running timers; it exists exactly while at least one timer runs. The start lock keeps
// the test whether the list became empty or not together with what follows from it. The thread takes only the
// list lock, under which it sets the timers: a timer that has been taken out of the list is not touched any
// more.
//
// At the end of the library the thread is not joined, but the library waits until it has left its loop: while
// a library is unloaded, some systems let no thread begin or end. So a thread that has not entered its loop
// yet is not waited for, nor one that the system has ended.
#include "vorlund/system/TimerPool.h"

#include "vorlund/system/TickSource.h"

#include <vorlund/Exception.h>

namespace vorlund {
namespace {

constexpr TFailure kStillAlive{VRL_L("vorlund::CTimerPool::~CTimerPool"),
                               VRL_L("src/vorlund/system/TimerWin32"), 51, VRL_L("Timers still alive!")};

} // namespace

CTimerPool::~CTimerPool() noexcept(false) {
    // Without locks: nobody may start or stop timers any more, and a thread that the system has ended may
    // hold one for ever.
    if (thread_) {
        waiting::Set(stop_);
        if (!waiting::IsThreadLast() && hasEntered_) waiting::Wait(left_, waiting::kForever);
    }
    if (!timers_.IsEmpty()) Raise<CBugException>(kStillAlive);
}

void CTimerPool::Add(TTimerEntry& entry) {
    const CPlainLockGuard start(startLock_);
    if (entry.isRunning) return;
    entry.isRunning = true;
    entry.countdown = entry.period;
    {
        const CPlainLockGuard list(listLock_);
        timers_.Append(entry);
    }
    if (timers_.HasOne()) StartThread();
}

void CTimerPool::Remove(TTimerEntry& entry) {
    const CPlainLockGuard start(startLock_);
    if (!entry.isRunning) return;
    entry.isRunning = false;
    {
        const CPlainLockGuard list(listLock_);
        timers_.Remove(entry);
    }
    if (timers_.IsEmpty()) StopThread();
}

void CTimerPool::StartThread() {
    hasEntered_ = false;
    stop_ = waiting::Create();
    left_ = waiting::Create();
    thread_ = waiting::StartJoinable(&RunThread, this);
}

void CTimerPool::StopThread() {
    waiting::Set(stop_);
    if (thread_) waiting::Join(thread_);
    thread_ = nullptr;
    waiting::Close(stop_);
    waiting::Close(left_);
}

void CTimerPool::RunThread(void* argument) noexcept {
    CTimerPool& pool = *static_cast<CTimerPool*>(argument);
    pool.hasEntered_ = true;
    {
        waiting::CTickSource ticks;
        while (ticks.WaitForTick(pool.stop_)) pool.Tick();
    }
    waiting::Set(pool.left_);
}

void CTimerPool::Tick() {
    const CPlainLockGuard list(listLock_);
    for (TTimerEntry* entry = timers_.GetFirst(); entry; entry = entry->next) {
        // A period below 1 sets the timer at every tick. Compared before it is lowered, because the lowest
        // number has no predecessor.
        if (entry->countdown > 1) {
            --entry->countdown;
            continue;
        }
        entry->timer->SetState(true);
        entry->countdown = entry->period;
    }
}

} // namespace vorlund
