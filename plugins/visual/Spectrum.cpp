// Frequencies and levels are computed with functions whose last bits differ from system to system, so they
// are rounded to 4096ths of a line of the transform and to sixteenths of a decibel before anything is drawn.
#include "Spectrum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

using namespace vorlund;

namespace {

constexpr std::int64_t kEdgeUnit = 4096;
constexpr double kLeastPower = 1e-30;
/// From a line of levels to the next, in decibels.
constexpr int kLevelStep = 12;

struct TMark {
    double frequency;
    const char* text;
};
constexpr TMark kMarks[] = {{20, "20"},     {50, "50"},     {100, "100"},   {200, "200"},
                            {500, "500"},   {1000, "1k"},   {2000, "2k"},   {5000, "5k"},
                            {10000, "10k"}, {20000, "20k"}, {50000, "50k"}, {100000, "100k"}};

int GetGap(std::uint32_t pitch) {
    return pitch < 3 ? 0 : std::max(static_cast<int>(pitch) / 5, 1);
}

TArea WithoutNumbers(const TArea& area, const TAudioPictureSettings& settings, int textScale) {
    TArea rest = area;
    if (settings.hasScales != 0)
        rest.height = std::max(area.height - CCanvas::GetTextHeight(textScale) - 6 * textScale, 1);
    return rest;
}

} // namespace

CSpectrum::CSpectrum(const TAudioPictureSettings& settings, const TArea& area, std::uint32_t samplesPerSec,
                     int textScale)
    : settings_(settings), textScale_(textScale), area_(WithoutNumbers(area, settings, textScale)),
      pitch_(static_cast<int>(settings.barPitch)), barWidth_(pitch_ - GetGap(settings.barPitch)),
      bars_(static_cast<std::size_t>(std::max(area.width / pitch_, 1))), transform_(settings.transformSize),
      levels_(settings, samplesPerSec), levelsNow_(bars_) {
    // What is over at both sides.
    const int used = std::min(static_cast<int>(bars_) * pitch_, area_.width);
    area_.x += (area_.width - used) / 2;
    area_.width = used;
    MakeEdges(samplesPerSec);
    colours_.resize(static_cast<std::size_t>(area_.height));
    for (int y = 0; y < area_.height; ++y)
        colours_[static_cast<std::size_t>(y)] = Mix(settings_.lowColour, settings_.highColour,
                                                    static_cast<std::uint32_t>(256 * y / area_.height));
}

void CSpectrum::MakeEdges(std::uint32_t samplesPerSec) {
    const double lowest = settings_.lowestFrequency;
    const double ratio = settings_.highestFrequency / lowest;
    const double lines = static_cast<double>(settings_.transformSize) / samplesPerSec;
    for (std::size_t i = 0; i <= bars_; ++i) {
        const double part = static_cast<double>(i) / static_cast<double>(bars_);
        edges_.push_back(std::llround(lowest * std::pow(ratio, part) * lines * kEdgeUnit));
    }
}

void CSpectrum::Analyse(const TSound& sound, std::int64_t frame) {
    const std::vector<double>& powers = transform_.Apply(sound);
    for (std::size_t i = 0; i < bars_; ++i) levelsNow_[i] = GetLevel(powers, i);
    levels_.Set(frame, levelsNow_);
}

int CSpectrum::GetLevel(const std::vector<double>& powers, std::size_t bar) const {
    const int lowest = settings_.lowestLevel * CLevels::kUnit;
    const auto last = static_cast<std::int64_t>(powers.size() - 1) * kEdgeUnit;
    const std::int64_t first = edges_[bar];
    const std::int64_t end = std::min(edges_[bar + 1], last);
    if (first >= last) return lowest;
    const auto between = [&](std::int64_t edge) {
        const auto line = static_cast<std::size_t>(edge / kEdgeUnit);
        const double part = static_cast<double>(edge % kEdgeUnit) / kEdgeUnit;
        return part == 0 ? powers[line] : powers[line] * (1 - part) + powers[line + 1] * part;
    };
    double power = std::max({between(first), between(end), kLeastPower});
    for (std::int64_t line = first / kEdgeUnit + 1; line * kEdgeUnit < end; ++line)
        power = std::max(power, powers[static_cast<std::size_t>(line)]);
    const auto level = std::llround(10 * CLevels::kUnit * std::log10(power));
    return static_cast<int>(std::clamp<long long>(level, lowest, settings_.highestLevel * CLevels::kUnit));
}

int CSpectrum::GetY(int level) const {
    const int lowest = settings_.lowestLevel * CLevels::kUnit;
    const int range = (settings_.highestLevel - settings_.lowestLevel) * CLevels::kUnit;
    return area_.y + area_.height - (2 * area_.height * (level - lowest) + range) / (2 * range);
}

int CSpectrum::GetX(double frequency) const {
    const double lowest = settings_.lowestFrequency;
    const double part = std::log(frequency / lowest) / std::log(settings_.highestFrequency / lowest);
    // Rounded away from the last bits first, which differ.
    constexpr double kParts = 1 << 20;
    return area_.x + static_cast<int>(std::floor(std::round(part * kParts) / kParts * area_.width));
}

void CSpectrum::DrawGround(CCanvas& canvas) const {
    const int line = std::max(textScale_ / 2, 1);
    const int bottom = area_.y + area_.height;
    for (int level = settings_.highestLevel - kLevelStep; level > settings_.lowestLevel;
         level -= kLevelStep) {
        const int y = GetY(level * CLevels::kUnit);
        canvas.Fill({0, y, canvas.GetWidth(), line}, settings_.scaleColour);
    }
    canvas.Fill({0, bottom, canvas.GetWidth(), line}, settings_.scaleColour);
    int free = 0;
    for (const TMark& mark : kMarks) {
        if (mark.frequency <= settings_.lowestFrequency || mark.frequency >= settings_.highestFrequency)
            continue;
        const int x = GetX(mark.frequency);
        canvas.Fill({x, area_.y, line, area_.height}, settings_.scaleColour);
        const int width = CCanvas::GetTextWidth(mark.text, textScale_);
        if (x - width / 2 < free || x + width / 2 > canvas.GetWidth()) continue;
        canvas.Text(x - width / 2, bottom + 4 * textScale_, mark.text, textScale_, settings_.textColour);
        free = x + width / 2 + 4 * textScale_;
    }
}

/// At every other line, each on a piece of the ground, because bars are often high there.
void CSpectrum::DrawLevels(CCanvas& canvas) const {
    const int pad = 2 * textScale_;
    const int height = CCanvas::GetTextHeight(textScale_);
    for (int level = settings_.highestLevel - 2 * kLevelStep; level > settings_.lowestLevel;
         level -= 2 * kLevelStep) {
        const std::string text = std::to_string(level);
        const int y = GetY(level * CLevels::kUnit) - height / 2;
        canvas.Fill({area_.x, y - pad, CCanvas::GetTextWidth(text, textScale_) + 4 * pad, height + 2 * pad},
                    settings_.groundColour);
        canvas.Text(area_.x + 2 * pad, y, text, textScale_, settings_.textColour);
    }
}

void CSpectrum::Draw(CCanvas& canvas) const {
    std::vector<int> tops;
    for (const int level : levels_.GetBars()) tops.push_back(GetY(level));
    const int bottom = area_.y + area_.height;
    const int first = tops.empty() ? bottom : *std::min_element(tops.begin(), tops.end());
    for (int y = std::max(first, area_.y); y < bottom; ++y) DrawRow(canvas.GetRow(y) + area_.x, y, tops);

    const int thickness = std::max(textScale_, 1);
    int x = area_.x;
    for (const int level : levels_.GetPeaks()) {
        if (level > settings_.lowestLevel * CLevels::kUnit)
            canvas.Fill({x, std::max(GetY(level) - thickness, area_.y), barWidth_, thickness},
                        settings_.peakColour);
        x += pitch_;
    }
    if (settings_.hasScales != 0) DrawLevels(canvas);
}

void CSpectrum::DrawRow(std::uint32_t* row, int y, const std::vector<int>& tops) const {
    const std::uint32_t colour = colours_[static_cast<std::size_t>(y - area_.y)];
    const int width = std::min(barWidth_, area_.width);
    for (const int top : tops) {
        if (top <= y) std::fill(row, row + width, colour);
        row += pitch_;
    }
}
