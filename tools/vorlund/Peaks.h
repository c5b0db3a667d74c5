// The lowest and highest samples of a sound, part by part, as web players draw it.
#pragma once

#include "SoundReader.h"

#include <vorlund/DataFormat.h>

#include <cstdint>
#include <string>
#include <vector>

/// Divides a sound into parts of equal length and keeps the extremes of each channel, in 8 bits.
class CPeaks final : public CSoundSink {
public:
    /// At most `points` parts of a sound that has `frames`.
    CPeaks(const vorlund::TDataFormat_AudioPcm& format, std::uint64_t frames, std::uint32_t points);

    void Write(const float* samples, std::size_t frames) override;

    /// The document of version 2 of audiowaveform's data format (BBC R&D, audiowaveform-format.5): a minimum
    /// and a maximum of -128 to 127 for each channel, point by point.
    std::string ToJson() const;

private:
    const std::uint32_t channels_;
    const std::uint32_t samplesPerSec_;
    const std::uint64_t framesPerPoint_;
    std::uint64_t frame_ = 0;
    /// A minimum and a maximum for each channel.
    std::vector<std::int8_t> points_;
};
