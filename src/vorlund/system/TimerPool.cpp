// One thread serves all running timers; it exists exactly while at least one timer runs. The start lock keeps
// the test whether the list became empty or not together with what follows from it. The thread takes only the
// list lock, under which it sets the timers: a timer that has been taken out of the list is not touched any
// more.
//
// A timer may be a static object of a library that is being unloaded, and then the system lets no thread
// begin or end: stopping waits until the thread has left our code, not for its end. The clock of the system
// is made and destroyed without a lock of ours, because a system may wait there until nothing is loaded or
// unloaded.
#include "vorlund/system/TimerPool.h"

#include "vorlund/system/TickSource.h"
#include "vorlund/system/WaitThread.h"

#include <vorlund/Exception.h>

#include <new>
#include <utility>

namespace vorlund {
namespace {

constexpr TFailure kStillAlive{VRL_L("vorlund::CTimerPool::~CTimerPool"),
                               VRL_L("src/vorlund/system/TimerWin32"), 51, VRL_L("Timers still alive!")};

} // namespace

/// What a run of the thread needs.
struct CTimerPool::TClock {
    TClock() = default;
    TClock(const TClock&) = delete;
    TClock& operator=(const TClock&) = delete;
    ~TClock() { waiting::Close(stop); }

    waiting::TEventHandle stop = waiting::Create();
    waiting::CTickSource ticks;
    waiting::TWorkHandle work = nullptr;
};

CTimerPool::~CTimerPool() noexcept(false) {
    // Without locks: nobody may start or stop timers any more, and a thread that the system has ended may
    // hold one for ever.
    if (clock_ && !waiting::IsThreadLast()) StopClock();
    if (!timers_.IsEmpty()) Raise<CBugException>(kStillAlive);
}

void CTimerPool::Add(TTimerEntry& entry) {
    std::unique_ptr<TClock> spare;
    bool wasSpareMade = false;
    while (!TryAdd(entry, spare, wasSpareMade)) {
        spare.reset(new (std::nothrow) TClock);
        wasSpareMade = true;
    }
}

bool CTimerPool::TryAdd(TTimerEntry& entry, std::unique_ptr<TClock>& spare, bool wasSpareMade) {
    const CPlainLockGuard start(startLock_);
    if (entry.isRunning) return true;
    const bool isFirst = timers_.IsEmpty();
    if (isFirst && !wasSpareMade) return false;
    entry.isRunning = true;
    entry.countdown = entry.period;
    {
        const CPlainLockGuard list(listLock_);
        timers_.Append(entry);
    }
    if (isFirst && spare) {
        clock_ = spare.release();
        clock_->work = waiting::StartWork(&RunThread, clock_);
    }
    return true;
}

void CTimerPool::Remove(TTimerEntry& entry) {
    if (waiting::IsThreadLast()) {
        // No lock is needed, and one may be held for ever.
        if (entry.isRunning) timers_.Remove(entry);
        entry.isRunning = false;
        return;
    }
    std::unique_ptr<TClock> stopped;
    const CPlainLockGuard start(startLock_);
    if (!entry.isRunning) return;
    entry.isRunning = false;
    {
        const CPlainLockGuard list(listLock_);
        timers_.Remove(entry);
    }
    if (timers_.IsEmpty() && clock_) stopped = StopClock();
}

std::unique_ptr<CTimerPool::TClock> CTimerPool::StopClock() {
    waiting::Set(clock_->stop);
    if (clock_->work) waiting::EndWork(clock_->work);
    return std::unique_ptr<TClock>(std::exchange(clock_, nullptr));
}

void CTimerPool::RunThread(void* argument) noexcept {
    TClock& clock = *static_cast<TClock*>(argument);
    while (clock.ticks.WaitForTick(clock.stop)) timerPool.Tick();
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
