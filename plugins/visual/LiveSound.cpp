#include "LiveSound.h"

#include <algorithm>

CLiveSound::CLiveSound(std::uint32_t channels, std::uint32_t kept, const TReach& reach)
    : channels_(channels), kept_(kept), ring_((reach.back + reach.ahead) * kept) {}

void CLiveSound::Write(const float* samples, std::size_t frames) {
    const std::lock_guard lock(mutex_);
    written_ += static_cast<std::int64_t>(frames);
    const std::size_t room = ring_.size() / kept_;
    if (frames > room) {
        samples += (frames - room) * channels_;
        frames = room;
    }
    for (; frames > 0; --frames, samples += channels_) {
        std::copy_n(samples, kept_, ring_.begin() + static_cast<std::ptrdiff_t>(next_));
        next_ += kept_;
        if (next_ == ring_.size()) next_ = 0;
    }
}

std::int64_t CLiveSound::Copy(std::vector<float>& samples) const {
    samples.resize(ring_.size());
    const std::lock_guard lock(mutex_);
    const auto oldest = ring_.begin() + static_cast<std::ptrdiff_t>(next_);
    std::copy(ring_.begin(), oldest, std::copy(oldest, ring_.end(), samples.begin()));
    return written_;
}
