#include "Levels.h"

#include <vorlund/AudioConversion.h>

#include <algorithm>
#include <cmath>

using namespace vorlund;

namespace {

/// Frames that share a peak: less than what the eye tells apart.
constexpr std::size_t kPeakFrames = 1024;

} // namespace

float CPeakFinder::Find(const void* samples, std::size_t frames) {
    if (frames == 0 || format_.GetBlockSize() == 0) return 0;
    floats_.resize(frames * format_.channels);
    ConvertAudio(floats_.data(), samples, frames,
                 {.from = format_.sampleFormat, .to = BUFFER_FORMAT_FLOAT, .channels = format_.channels});
    float peak = 0;
    for (const float sample : floats_) peak = std::max(peak, std::abs(sample));
    return peak;
}

void CLevels::SetFormat(const TDataFormat_AudioPcm& format) {
    format_ = format;
    finder_ = CPeakFinder(format);
}

void CLevels::Add(const void* samples, std::size_t frames, std::uint64_t first) {
    const auto* const bytes = static_cast<const std::uint8_t*>(samples);
    for (std::size_t at = 0; at < frames; at += kPeakFrames) {
        const float peak =
            finder_.Find(bytes + at * format_.GetBlockSize(), std::min(kPeakFrames, frames - at));
        const std::lock_guard lock(mutex_);
        peaks_.push_back({first + at, peak});
    }
}

float CLevels::Take(std::uint64_t end) {
    const std::lock_guard lock(mutex_);
    float peak = 0;
    for (; !peaks_.empty() && peaks_.front().first < end; peaks_.pop_front())
        peak = std::max(peak, peaks_.front().peak);
    return peak;
}

void CLevels::Forget() {
    const std::lock_guard lock(mutex_);
    peaks_.clear();
}
