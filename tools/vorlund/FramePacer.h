// Frames at an even rate.
#pragma once

#include <chrono>
#include <cstdint>

/// Says when the next frame is due. A frame that comes too late for its own time and for the time of the
/// next one is dropped, so that a picture never runs behind the clock.
class CFramePacer {
public:
    using TClock = std::chrono::steady_clock;

    /// \param framesPerSecond  0 or NaN: as fast as possible
    /// \param start  the time of the first frame
    CFramePacer(float framesPerSecond, TClock::time_point start);

    /// Goes on to the next frame that can still be shown in time at `now`, and returns when it is due.
    TClock::time_point Next(TClock::time_point now);

    std::uint64_t GetDropped() const { return dropped_; }

private:
    TClock::time_point DueTime(std::uint64_t frame) const;

    double period_;
    TClock::time_point start_;
    std::uint64_t frame_ = 0;
    std::uint64_t dropped_ = 0;
};
