// The running timers of a process.
#pragma once

#include "vorlund/system/IntrusiveList.h"
#include "vorlund/system/PlainLock.h"
#include "vorlund/system/WaitThread.h"

#include <vorlund/Event.h>

#include <cstdint>

namespace vorlund {

/// What the pool knows of a timer; a part of the timer's data.
struct TTimerEntry {
    CEvent* const timer;
    const std::int32_t period; ///< milliseconds
    std::int32_t countdown = 0;
    bool isRunning = false;
    TTimerEntry* previous = nullptr;
    TTimerEntry* next = nullptr;
};

/// The list of running timers, in the order in which they were started, and the thread that sets them. The
/// one object is constant-initialised, and usable until it ends with the library. Any thread.
class CTimerPool {
public:
    constexpr CTimerPool() = default;
    CTimerPool(const CTimerPool&) = delete;
    CTimerPool& operator=(const CTimerPool&) = delete;

    /// Stops the thread. Raises `CBugException` "Timers still alive!" when timers run.
    ~CTimerPool() noexcept(false);

    /// Adds a timer, unless it runs already.
    void Add(TTimerEntry& entry);
    /// Takes out a timer if it runs.
    void Remove(TTimerEntry& entry);

private:
    static void RunThread(void* pool) noexcept;
    void Tick();
    void StartThread();
    void StopThread();

    CPlainLock startLock_; ///< keeps the changes of the list and of the thread together
    CPlainLock listLock_;  ///< taken after the other one
    CIntrusiveList<TTimerEntry> timers_;
    waiting::TThreadHandle thread_ = nullptr;
    waiting::TEventHandle stop_ = nullptr;
    waiting::TEventHandle left_ = nullptr; ///< set by the thread when it has left its loop
    std::atomic<bool> hasEntered_{false};  ///< the thread has entered its loop
};

extern CTimerPool timerPool;

} // namespace vorlund
