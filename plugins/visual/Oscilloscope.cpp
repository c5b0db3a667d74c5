// All that is computed with fractions is arithmetic that IEEE 754 defines to the last bit, and becomes a
// whole number of 256ths of a pixel; so the pictures are the same on every system.
#include "Oscilloscope.h"

#include <algorithm>
#include <cmath>
#include <string>

using namespace vorlund;

namespace {

constexpr int kUnit = 256;
/// A lobe counts as the highest when it reaches so much of the highest one.
constexpr float kHighLobe = 0.9F;
/// The sound must go so much of its peak below zero before an edge counts.
constexpr float kHysteresis = 0.125F;
/// Beyond that the line is out of every picture.
constexpr double kFarAway = 1e7;

int ToUnits(double pixels) {
    return static_cast<int>(std::floor(std::clamp(pixels * kUnit, -kFarAway, kFarAway) + 0.5));
}

float PeakOf(const TSound& sound, std::uint32_t channel) {
    float peak = 0;
    for (std::size_t i = 0; i < sound.frames; ++i) peak = std::max(peak, std::abs(sound.At(i, channel)));
    return peak;
}

} // namespace

COscilloscope::COscilloscope(const TAudioPictureSettings& settings, const TArea& area, std::uint32_t channels,
                             std::uint32_t samplesPerSec)
    : settings_(settings), area_(area), lanes_(std::min(channels, kMaxLanes)),
      span_(std::max<std::size_t>(std::size_t{settings.span} * samplesPerSec / 1000, 2)),
      search_(std::max<std::size_t>(samplesPerSec / 20, 2)),
      halfWidth_(std::max(area.height * kUnit / 440, kUnit / 2)), shine_(halfWidth_ * 6),
      spans_(static_cast<std::size_t>(area.width) + 2) {}

TReach COscilloscope::GetReach() const {
    return {span_ / 2 + search_ + 4, span_ / 2 + 4};
}

TArea COscilloscope::GetLane(std::uint32_t lane) const {
    const int number = static_cast<int>(lane);
    const int count = static_cast<int>(lanes_);
    const int top = area_.height * number / count;
    return {area_.x, area_.y + top, area_.width, area_.height * (number + 1) / count - top};
}

void COscilloscope::DrawGround(CCanvas& canvas, int textScale) const {
    constexpr int kDivisions = 10;
    const int line = std::max(textScale / 2, 1);
    for (int i = 1; i < kDivisions; ++i)
        canvas.Fill({area_.x + area_.width * i / kDivisions - line / 2, area_.y, line, area_.height},
                    settings_.scaleColour);
    for (std::uint32_t i = 0; i < lanes_; ++i) {
        const TArea lane = GetLane(i);
        canvas.Fill({lane.x, lane.y + lane.height / 2, lane.width, line}, settings_.scaleColour);
    }
    const int pad = 4 * textScale;
    canvas.Text(area_.x + pad, area_.y + pad, std::to_string(settings_.span) + " ms", textScale,
                settings_.textColour);
}

std::uint32_t COscilloscope::FindLoudest(const TSound& sound) const {
    std::uint32_t loudest = 0;
    float highest = -1;
    for (std::uint32_t channel = 0; channel < lanes_; ++channel) {
        const float peak = PeakOf(sound, channel);
        if (peak > highest) {
            highest = peak;
            loudest = channel;
        }
    }
    return loudest;
}

double COscilloscope::FindMiddle(const TSound& sound) const {
    const std::uint32_t channel = FindLoudest(sound);
    const float armedBelow = -kHysteresis * PeakOf(sound, channel);
    const std::size_t first = sound.centre - search_;
    std::size_t chosen = 0;
    float chosenLobe = 0;
    // Of the edges whose lobe is about the highest, the last: of a tone that is the same point of its period
    // in every picture, however many edges the period has.
    for (int round = 0; round < 2; ++round) {
        const float least = round == 0 ? 0 : chosenLobe * kHighLobe;
        bool isArmed = false;
        for (std::size_t i = first; i <= sound.centre; ++i) {
            const float value = sound.At(i, channel);
            if (value < armedBelow) isArmed = true;
            if (!isArmed || value < 0 || sound.At(i - 1, channel) >= 0) continue;
            isArmed = false;
            float lobe = 0;
            for (std::size_t at = i; at < sound.frames && sound.At(at, channel) >= 0; ++at)
                lobe = std::max(lobe, sound.At(at, channel));
            if (round == 0)
                chosenLobe = std::max(chosenLobe, lobe);
            else if (lobe >= least)
                chosen = i;
        }
    }
    if (chosen == 0) return static_cast<double>(sound.centre);
    const double before = static_cast<double>(sound.At(chosen - 1, channel));
    const double behind = static_cast<double>(sound.At(chosen, channel));
    return static_cast<double>(chosen) - behind / (behind - before);
}

void COscilloscope::MakeSpans(const TSound& sound, std::uint32_t channel, double first, const TArea& lane) {
    // The middle of the row that the line of the ground is in.
    const int middleRow = lane.y + lane.height / 2;
    const double middle = middleRow + 0.5;
    const double height = lane.height / 2.0 * settings_.gain / 100;
    const auto at = [&](double position) {
        const auto before = static_cast<std::size_t>(position);
        const double part = position - static_cast<double>(before);
        return sound.At(before, channel) * (1 - part) + sound.At(before + 1, channel) * part;
    };
    // A column more at each side, for what shines in.
    for (std::size_t i = 0; i < spans_.size(); ++i) {
        const auto getPosition = [&](double column) {
            const double position = first + column * static_cast<double>(span_) / area_.width;
            return std::clamp(position, 0.0, static_cast<double>(sound.frames - 2));
        };
        const double left = getPosition(static_cast<double>(i) - 1);
        const double right = getPosition(static_cast<double>(i));
        double lowest = at(left);
        double highest = lowest;
        const auto include = [&](double value) {
            lowest = std::min(lowest, value);
            highest = std::max(highest, value);
        };
        for (auto frame = static_cast<std::size_t>(left) + 1; static_cast<double>(frame) < right; ++frame)
            include(static_cast<double>(sound.At(frame, channel)));
        include(at(right));
        spans_[i] = {ToUnits(middle - highest * height), ToUnits(middle - lowest * height)};
    }
}

void COscilloscope::DrawColumn(CCanvas& canvas, int x, const TArea& lane, const TSpan& span,
                               const TSpan& around) const {
    const int top = lane.y * kUnit;
    const int bottom = (lane.y + lane.height) * kUnit;
    const int first = std::clamp(around.top - shine_, top, bottom) / kUnit;
    const int last = std::clamp(around.bottom + shine_ + kUnit - 1, top, bottom) / kUnit;
    if (first >= last) return;
    // How much of a pixel's height lies in a span that is as much higher as the line is wide.
    const auto cover = [this](const TSpan& line, int y) {
        return std::clamp(std::min(line.bottom + halfWidth_, y + kUnit) - std::max(line.top - halfWidth_, y),
                          0, kUnit);
    };
    std::uint32_t* pixel = canvas.GetRow(first) + x;
    for (int row = first; row < last; ++row, pixel += canvas.GetWidth()) {
        const int y = row * kUnit;
        int part = cover(span, y);
        if (part < kUnit) {
            // Half of it beside the line, where it is steep, and less and less of it further away.
            constexpr int kShineParts = 72;
            const int centre = y + kUnit / 2;
            const int distance = std::max({around.top - centre, centre - around.bottom, 0});
            const int shine = std::max(shine_ - distance, 0) * kShineParts / shine_;
            part = std::max({part, cover(around, y) / 2, shine});
        }
        if (part > 0) *pixel = Mix(settings_.waveColour, *pixel, static_cast<std::uint32_t>(part));
    }
}

void COscilloscope::Draw(CCanvas& canvas, const TSound& sound) {
    const double first = FindMiddle(sound) - static_cast<double>(span_) / 2;
    for (std::uint32_t i = 0; i < lanes_; ++i) {
        const TArea lane = GetLane(i);
        if (lane.height == 0) continue;
        MakeSpans(sound, i, first, lane);
        for (int x = 0; x < area_.width; ++x) {
            const TSpan* const span = spans_.data() + x + 1;
            DrawColumn(canvas, area_.x + x, lane, *span,
                       {std::min({span[-1].top, span[0].top, span[1].top}),
                        std::max({span[-1].bottom, span[0].bottom, span[1].bottom})});
        }
    }
}
