// A sound as a picture: waveform and spectrogram, with axes.
#pragma once

#include "SoundReader.h"
#include "Spectrogram.h"

#include <vorlund/DataFormat.h>

#include <cstdint>
#include <string>
#include <vector>

class CCanvas;

class CSoundPicture final : public CSoundSink {
public:
    CSoundPicture(const vorlund::TDataFormat_AudioPcm& format, std::uint64_t frames, std::string title);

    void Write(const float* samples, std::size_t frames) override;

    /// The picture as a PNG file; to be called once behind the last frame.
    std::vector<std::uint8_t> ToPng();

private:
    struct TExtremes {
        float lowest = 0;
        float highest = 0;
        bool isSet = false;
    };

    void DrawWaveform(CCanvas& canvas, std::uint32_t channel, int top) const;
    void DrawSpectrogram(CCanvas& canvas, int top) const;
    void DrawLegend(CCanvas& canvas, int top) const;
    void DrawTimes(CCanvas& canvas, int top) const;

    const vorlund::TDataFormat_AudioPcm format_;
    const std::uint64_t frames_;
    const std::string title_;
    /// Of the channels that have a lane.
    const std::uint32_t lanes_;
    std::uint64_t frame_ = 0;
    std::vector<TExtremes> extremes_;
    CSpectrogram spectrogram_;
};
