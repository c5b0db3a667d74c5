// Levels of bars that fall, and their peaks.
#pragma once

#include <vorlund/AudioPictures.h>

#include <cstdint>
#include <deque>
#include <vector>

/// Levels are whole numbers of sixteenths of a decibel, and time is that of the sound, in frames. A level
/// falls from where it was by a whole number that depends on the two times alone, so what there is at a time
/// does not depend on when it was asked for, nor on what is further back than everything takes to fall.
class CLevels {
public:
    static constexpr int kUnit = 16;

    CLevels(const vorlund::TAudioPictureSettings& settings, std::uint32_t samplesPerSec);

    /// Nothing before counts.
    void Forget();
    /// The levels at a time, which is not before the last one. They are between the lowest and the highest.
    void Set(std::int64_t frame, const std::vector<int>& levels);

    const std::vector<int>& GetBars() const { return bars_; }
    /// Empty without peaks.
    const std::vector<int>& GetPeaks() const { return peaks_; }

    /// So many frames before a time the sound has no effect on it.
    std::int64_t GetMemory() const;

private:
    /// How far a level falls from frame 0 to that one.
    std::int64_t GetFall(std::uint32_t decibels, std::int64_t frame) const;
    void SetPeaks(std::int64_t frame, const std::vector<int>& levels);

    struct THeld {
        std::int64_t frame;
        std::vector<int> levels;
    };

    const vorlund::TAudioPictureSettings settings_;
    const std::int64_t samplesPerSec_;
    const std::int64_t holdFrames_;
    std::vector<int> bars_;
    std::vector<int> peaks_;
    /// Each level plus how far it would have fallen since frame 0.
    std::vector<std::int64_t> raisedBars_;
    std::vector<std::int64_t> raisedPeaks_;
    /// What peaks still stay at.
    std::deque<THeld> held_;
};
