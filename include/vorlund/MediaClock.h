/// \file
/// `CMediaClock`, the one clock by which the parts of a presentation are shown.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund {

class IAudioOutput;

/// Tells the time of a presentation in seconds: that of the frame that an audio output plays now, or, without
/// one, that of the system's clock. Whoever shows pictures asks it what time it is and how long to wait; so
/// sound and pictures keep together whatever the device's clock does. It is stopped at first, at time 0.
///
/// Any thread. Since version 0.1.
class VRL_API CMediaClock {
public:
    /// By the system's clock. Raises `COutOfMemoryException` "malloc failed".
    CMediaClock();
    /// By the position of `output`, to which it holds a reference; it goes when that does, whatever `Start`
    /// and `Stop` say. Time 0 is frame 0 of the output, unless `SetTime` moves it.
    explicit CMediaClock(IAudioOutput* output);
    CMediaClock(const CMediaClock&) = delete;
    CMediaClock& operator=(const CMediaClock&) = delete;
    ~CMediaClock();

    /// Lets the time go on; only for the system's clock.
    void Start();
    /// Keeps the time where it is; only for the system's clock.
    void Stop();

    /// Seconds. Never goes back but by `SetTime`. By an output, it is as exact as its position; while that is
    /// closed, the time stands still.
    double GetTime() const;

    /// It is that time now: for the jump of a seek.
    void SetTime(double seconds);

    /// How many seconds of the system's clock it will take until `time`, by what is known now; 0 when that
    /// has passed, and infinity while the time stands still.
    double GetWait(double time) const;

private:
    struct TData;
    TData* data_;
};

} // namespace vorlund
