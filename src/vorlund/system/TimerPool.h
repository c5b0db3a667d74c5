// The running timers of a process.
#pragma once

#include "vorlund/system/IntrusiveList.h"
#include "vorlund/system/PlainLock.h"

#include <vorlund/Event.h>

#include <cstdint>
#include <memory>

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
    struct TClock;

    /// False, with nothing done, when it needs a clock and none was made for it.
    bool TryAdd(TTimerEntry& entry, std::unique_ptr<TClock>& spare, bool wasSpareMade);
    static void RunThread(void* clock) noexcept;
    void Tick();
    /// Returns what is left of the clock: its destructor may wait for the system, so it needs no lock of
    /// ours.
    std::unique_ptr<TClock> StopClock();

    CPlainLock startLock_; ///< keeps the changes of the list and of the thread together
    CPlainLock listLock_;  ///< taken after the other one
    CIntrusiveList<TTimerEntry> timers_;
    TClock* clock_ = nullptr; ///< while timers run, unless the system refused one
};

extern CTimerPool timerPool;

} // namespace vorlund
