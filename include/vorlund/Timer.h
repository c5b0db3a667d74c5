/// \file
/// `CTimer`, an event that a timer sets periodically.
#pragma once

#include <vorlund/Event.h>

namespace vorlund {

/// An event that is set once per period while the timer runs. It is only set, never reset: the thread that
/// has waited for it calls `SetState(false)`; otherwise it stays set.
///
/// All running timers share one thread, which counts milliseconds as it sees them. Milliseconds that pass
/// while it is held up are lost, so timers run late and do not catch up. The event is set for the first time
/// one period after the start.
///
/// `Start` and `Stop` may be called from any thread, also from the callback of an asynchronous wait. No timer
/// may run when the library is unloaded or the process ends: its end then raises `CBugException`
/// "Timers still alive!".
///
/// \code{.cpp}
/// CTimer timer(0.005f); // seconds
/// timer.Start();
/// for (int i = 0; i < 3; ++i) {
///     timer.Wait();
///     timer.SetState(false); // the timer only sets it
/// }
/// timer.Stop();
/// \endcode
class VRL_API CTimer : public CEvent {
public:
    /// Not set and not running.
    ///
    /// \param period  seconds; the milliseconds are whole ones, `period` times 1000.0 truncated toward zero,
    ///                of which the low 32 bits count as a signed number. Below 1 ms, the event is set every
    ///                millisecond. Decimal fractions that lie a little below their number lose one: 0.01f
    ///                counts 9.
    ///
    /// Raises `COutOfMemoryException` "malloc failed" when there is no memory for its data.
    explicit CTimer(float period);
    CTimer(const CTimer&) = delete;
    CTimer& operator=(const CTimer&) = delete;

    /// Stops.
    ~CTimer() override;

    /// Starts the timer; nothing happens when it runs already.
    void Start();

    /// Stops the timer: it sets the event no more when this has returned. The event stays as it is. Nothing
    /// happens when the timer does not run. Stopping the last running timer waits until the timers' thread
    /// has left the library, and then it ends. So a running timer may be a static object of a library that is
    /// unloaded.
    void Stop();

private:
    struct TData;
    TData* data_;
};

} // namespace vorlund
