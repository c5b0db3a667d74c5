// One kind of picture for one kind of sound.
#pragma once

#include "Canvas.h"
#include "Oscilloscope.h"
#include "Sound.h"
#include "Spectrum.h"

#include <vorlund/AudioPictures.h>

#include <cstdint>
#include <optional>
#include <vector>

class CPainter {
public:
    /// Settings, channels and rate are in their ranges. Raises `std::bad_alloc`.
    CPainter(const vorlund::TAudioPictureSettings& settings, std::uint32_t channels,
             std::uint32_t samplesPerSec);

    /// What each sound must hold around its centre.
    const TReach& GetReach() const { return reach_; }
    /// So many frames of sound before a picture have an effect on it.
    std::int64_t GetMemory() const { return spectrum_ ? spectrum_->GetMemory() : 0; }
    void Forget();
    /// Notes the sound, whose centre is at the frame `frame`, not before that of the last one.
    void Analyse(const TSound& sound, std::int64_t frame);
    /// Draws what was noted; `sound` is the same as that of the last `Analyse`.
    void Draw(const TSound& sound, std::uint32_t* picture);

private:
    void DrawGround();

    const vorlund::TAudioPictureSettings settings_;
    const int width_;
    const int height_;
    const int textScale_;
    std::optional<COscilloscope> oscilloscope_;
    std::optional<CSpectrum> spectrum_;
    TReach reach_;
    /// What is the same in all pictures.
    std::vector<std::uint32_t> ground_;
};
