/// \file
/// `CPeriodicClock`, ticks at equal distances that never drift from the system's clock.
#pragma once

#include <vorlund/Platform.h>

#include <cstdint>

namespace vorlund {

class CEvent;

/// A clock for loops that must keep up with time: sound that is made in blocks, frames, measurements. Tick n
/// is due `n` periods after the start, on a clock that nobody sets, however late earlier ones were noticed,
/// and ticks that passed while nobody waited are counted, not lost. (`CTimer` counts the milliseconds that
/// its thread sees, so it runs late and loses some.) It has no thread and no event of its own: whoever waits,
/// waits for the time itself.
///
/// A wait ends at the tick or later, by what the system takes to wake a thread; on Windows, which counts
/// whole milliseconds, by up to one more. While the object lives there, the system's timers run at one
/// millisecond.
///
/// One thread at a time; another may set the event that ends a wait. Since version 0.1.
///
/// \code{.cpp}
/// CPeriodicClock clock(0.005); // seconds; it starts at once, and does not drift
/// const std::uint64_t ticks = clock.Wait(); // how many are over, one as a rule
/// std::printf("%d\n", ticks > 0); // prints 1
/// \endcode
class VRL_API CPeriodicClock {
public:
    /// Starts: the first tick is due one period from now. Since version 0.1.
    ///
    /// \param period  seconds, 0.000001 to 86400; kept as it is, so that the ticks of 1.0 / 44100 stay exact
    ///
    /// Raises `CInvalidParameterException` "Period must be 1 microsecond to 1 day", also for what is no
    /// number, and `COutOfMemoryException` "malloc failed" when there is no memory for its data.
    explicit CPeriodicClock(double period);
    CPeriodicClock(const CPeriodicClock&) = delete;
    CPeriodicClock& operator=(const CPeriodicClock&) = delete;
    ~CPeriodicClock();

    /// Starts anew, with the same period. Since version 0.1.
    void Restart();

    /// Waits until a tick is due that no earlier wait has returned; returns at once when there is one.
    ///
    /// \return how many ticks came due since the last wait, at least 1: more when the caller was late
    ///
    /// Since version 0.1.
    std::uint64_t Wait();

    /// The same, but ends at once with 0 when `stop` is set, also when ticks are due; these are left for the
    /// next wait. Since version 0.1.
    std::uint64_t Wait(const CEvent& stop);

    /// How many ticks came due since the start, waited for or not. Since version 0.1.
    std::uint64_t GetTicks() const;

    /// How many of them waits have returned. Since version 0.1.
    std::uint64_t GetWaitedTicks() const;

private:
    struct TData;
    TData* data_;
};

} // namespace vorlund
