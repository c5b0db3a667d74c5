#include "Levels.h"

#include <algorithm>
#include <limits>
#include <utility>

using namespace vorlund;

namespace {

constexpr std::int64_t kNothing = std::numeric_limits<std::int64_t>::min() / 2;

} // namespace

CLevels::CLevels(const TAudioPictureSettings& settings, std::uint32_t samplesPerSec)
    : settings_(settings), samplesPerSec_(samplesPerSec),
      holdFrames_(std::int64_t{settings.peakHold} * samplesPerSec / 1000) {}

void CLevels::Forget() {
    raisedBars_.clear();
    raisedPeaks_.clear();
    held_.clear();
}

std::int64_t CLevels::GetMemory() const {
    const std::int64_t range = std::int64_t{settings_.highestLevel} - settings_.lowestLevel + 1;
    const auto takes = [&](std::uint32_t fall) {
        return fall == 0 ? 0 : (range * samplesPerSec_ + fall - 1) / fall;
    };
    const std::int64_t peaks = settings_.peakFall == 0 ? 0 : holdFrames_ + takes(settings_.peakFall);
    return std::max(takes(settings_.barFall), peaks);
}

std::int64_t CLevels::GetFall(std::uint32_t decibels, std::int64_t frame) const {
    const std::int64_t perSecond = std::int64_t{decibels} * kUnit;
    // By whole seconds and the rest, so that no product is too big; rounded down below 0 too.
    std::int64_t seconds = frame / samplesPerSec_;
    std::int64_t rest = frame % samplesPerSec_;
    if (rest < 0) {
        rest += samplesPerSec_;
        --seconds;
    }
    return seconds * perSecond + rest * perSecond / samplesPerSec_;
}

void CLevels::Set(std::int64_t frame, const std::vector<int>& levels) {
    const int lowest = settings_.lowestLevel * kUnit;
    bars_ = levels;
    if (settings_.barFall != 0) {
        const std::int64_t fall = GetFall(settings_.barFall, frame);
        raisedBars_.resize(levels.size(), kNothing);
        for (std::size_t i = 0; i < levels.size(); ++i) {
            raisedBars_[i] = std::max(raisedBars_[i], levels[i] + fall);
            bars_[i] = static_cast<int>(std::max<std::int64_t>(raisedBars_[i] - fall, lowest));
        }
    }
    if (settings_.peakFall != 0) SetPeaks(frame, levels);
}

void CLevels::SetPeaks(std::int64_t frame, const std::vector<int>& levels) {
    raisedPeaks_.resize(levels.size(), kNothing);
    if (!held_.empty() && held_.back().frame == frame) held_.pop_back();
    held_.push_back({frame, levels});
    // They begin to fall when the time that they stay is over.
    while (held_.front().frame < frame - holdFrames_) {
        const THeld& oldest = held_.front();
        const std::int64_t fall = GetFall(settings_.peakFall, oldest.frame + holdFrames_);
        for (std::size_t i = 0; i < levels.size(); ++i)
            raisedPeaks_[i] = std::max(raisedPeaks_[i], oldest.levels[i] + fall);
        held_.pop_front();
    }
    const std::int64_t fall = GetFall(settings_.peakFall, frame);
    peaks_.assign(levels.size(), settings_.lowestLevel * kUnit);
    for (std::size_t i = 0; i < levels.size(); ++i)
        peaks_[i] = static_cast<int>(std::max<std::int64_t>(raisedPeaks_[i] - fall, peaks_[i]));
    for (const THeld& held : held_)
        for (std::size_t i = 0; i < levels.size(); ++i) peaks_[i] = std::max(peaks_[i], held.levels[i]);
}
