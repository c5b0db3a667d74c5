// Sound as a line over time.
#pragma once

#include "Canvas.h"
#include "Sound.h"

#include <vorlund/AudioPictures.h>

#include <optional>
#include <vector>

class COscilloscope {
public:
    /// Lanes for at most so many channels.
    static constexpr std::uint32_t kMaxLanes = 8;

    COscilloscope(const vorlund::TAudioPictureSettings& settings, const TArea& area, std::uint32_t channels,
                  std::uint32_t samplesPerSec);

    TReach GetReach() const;
    /// What does not change: lines and the time.
    void DrawGround(CCanvas& canvas, int textScale) const;
    void Draw(CCanvas& canvas, const TSound& sound);

    /// Where the middle of the picture is: at a rising edge through zero, or at the sound's centre.
    double FindMiddle(const TSound& sound) const;

private:
    /// From the highest to the lowest point of the line in a column, in 256ths of a pixel.
    struct TSpan {
        int top;
        int bottom;
    };

    TArea GetLane(std::uint32_t lane) const;
    std::uint32_t FindLoudest(const TSound& sound) const;
    void MakeSpans(const TSound& sound, std::uint32_t channel, double first, const TArea& lane);
    void DrawColumn(CCanvas& canvas, int x, const TArea& lane, const TSpan& span, const TSpan& around) const;

    const vorlund::TAudioPictureSettings settings_;
    const TArea area_;
    const std::uint32_t lanes_;
    /// Frames from left to right.
    const std::size_t span_;
    /// How far back edges are looked for: a period of 20 Hz.
    const std::size_t search_;
    /// Half of the line's width, and how far its shine goes, in 256ths of a pixel.
    const int halfWidth_;
    const int shine_;
    std::vector<TSpan> spans_;
};
