// The spectrum of a sound over time.
#pragma once

#include "SoundReader.h"

#include <cstdint>
#include <memory>
#include <vector>

/// Powers in a grid: time from left to right, frequency from 0 to half of the sample rate. All channels are
/// mixed with equal weights, cut into overlapping pieces with the window of Hann, and transformed; where
/// several pieces fall into a column, it has the highest power of each frequency.
class CSpectrogram final : public CSoundSink {
public:
    static constexpr std::size_t kSize = 2048;
    static constexpr std::size_t kBins = kSize / 2 + 1;

    CSpectrogram(std::uint32_t channels, std::uint64_t frames, std::size_t columns);
    ~CSpectrogram() override;

    void Write(const float* samples, std::size_t frames) override;
    /// To be called once behind the last frame.
    void Finish();

    /// In decibels: 0 for a sine of full scale; never below -200.
    float GetLevel(std::size_t column, std::size_t bin) const { return levels_[column * kBins + bin]; }

private:
    struct TTransform;

    void Transform();

    const std::uint32_t channels_;
    const std::uint64_t frames_;
    const std::size_t columns_;
    const std::size_t step_;
    std::unique_ptr<TTransform> transform_;
    /// What the next piece has so far, and the frame in its middle.
    std::vector<float> piece_;
    std::uint64_t middle_ = 0;
    std::vector<float> levels_;
};
