// Sound as bars over frequency.
#pragma once

#include "Canvas.h"
#include "Levels.h"
#include "Sound.h"
#include "Transform.h"

#include <vorlund/AudioPictures.h>

#include <cstdint>
#include <vector>

class CSpectrum {
public:
    CSpectrum(const vorlund::TAudioPictureSettings& settings, const TArea& area, std::uint32_t samplesPerSec,
              int textScale);

    TReach GetReach() const { return {settings_.transformSize / 2, settings_.transformSize / 2}; }
    /// Of levels, in frames of sound.
    std::int64_t GetMemory() const { return levels_.GetMemory(); }
    void Forget() { levels_.Forget(); }
    /// Takes the levels of the sound, whose centre is at the frame `frame`, not before the last one.
    void Analyse(const TSound& sound, std::int64_t frame);

    /// What does not change: lines and numbers.
    void DrawGround(CCanvas& canvas) const;
    void Draw(CCanvas& canvas) const;

private:
    int GetX(double frequency) const;
    int GetY(int level) const;
    void MakeEdges(std::uint32_t samplesPerSec);
    int GetLevel(const std::vector<double>& powers, std::size_t bar) const;
    void DrawLevels(CCanvas& canvas) const;
    void DrawRow(std::uint32_t* row, int y, const std::vector<int>& tops) const;

    const vorlund::TAudioPictureSettings settings_;
    const int textScale_;
    /// Where the bars are, above the numbers.
    TArea area_;
    const int pitch_;
    const int barWidth_;
    std::size_t bars_;
    /// Where bars begin and end, in 4096ths of a line of the transform; one more than there are bars.
    std::vector<std::int64_t> edges_;
    CTransform transform_;
    CLevels levels_;
    std::vector<int> levelsNow_;
    std::vector<std::uint32_t> colours_;
};
