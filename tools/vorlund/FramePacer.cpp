#include "FramePacer.h"

CFramePacer::CFramePacer(float framesPerSecond, TClock::time_point start)
    : period_(framesPerSecond > 0 ? 1.0 / static_cast<double>(framesPerSecond) : 0), start_(start) {}

CFramePacer::TClock::time_point CFramePacer::Next(TClock::time_point now) {
    ++frame_;
    if (period_ > 0) {
        const double elapsed = std::chrono::duration<double>(now - start_).count();
        const auto current = static_cast<std::uint64_t>(elapsed / period_);
        if (current > frame_) {
            dropped_ += current - frame_;
            frame_ = current;
        }
    }
    return DueTime(frame_);
}

/// From the start, not from the frame before: errors do not add up.
CFramePacer::TClock::time_point CFramePacer::DueTime(std::uint64_t frame) const {
    return start_ + std::chrono::duration_cast<TClock::duration>(
                        std::chrono::duration<double>(static_cast<double>(frame) * period_));
}
