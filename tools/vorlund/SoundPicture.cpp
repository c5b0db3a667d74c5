#include "SoundPicture.h"

#include "Canvas.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace vorlund;

namespace {

constexpr int kLeft = 90;
constexpr int kColumns = 1000;
constexpr int kWidth = kLeft + kColumns + 110;
constexpr int kTop = 40;
constexpr int kWaveHeight = 240;
constexpr int kLeastLane = 60;
constexpr int kGap = 20;
constexpr int kSpectrumHeight = 400;
constexpr int kBottom = 60;
/// More would make the picture higher than anybody looks at.
constexpr std::uint32_t kMaxLanes = 64;

constexpr TColour kGround{255, 255, 255};
constexpr TColour kInk{40, 40, 40};
constexpr TColour kGrid{215, 215, 215};
constexpr TColour kWave{31, 98, 163};

/// In decibels.
constexpr int kQuietest = -120;

/// From the quietest to full scale: dark blue, violet, red, yellow, white.
TColour GetHeat(float level) {
    constexpr TColour kStops[] = {{4, 4, 24}, {70, 16, 110}, {200, 50, 70}, {250, 170, 30}, {255, 255, 220}};
    constexpr int kLast = static_cast<int>(std::size(kStops)) - 1;
    const float place = std::clamp(1 - level / kQuietest, 0.0F, 1.0F) * kLast;
    const int stop = std::min(static_cast<int>(place), kLast - 1);
    const float part = place - static_cast<float>(stop);
    const auto mix = [part](std::uint8_t one, std::uint8_t other) {
        return static_cast<std::uint8_t>(
            std::lround(static_cast<float>(one) + part * static_cast<float>(other - one)));
    };
    const TColour& from = kStops[stop];
    const TColour& to = kStops[stop + 1];
    return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue)};
}

int GetLaneHeight(std::uint32_t lanes) {
    return std::max(kWaveHeight / static_cast<int>(lanes), kLeastLane);
}

/// A step of 1, 2 or 5 times a power of ten that divides the range into at most that many parts.
double GetStep(double range, int parts) {
    const double least = range / parts;
    const double power = std::pow(10, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (power * factor >= least) return power * factor;
    }
    return power * 10;
}

std::string ToText(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", number);
    return text;
}

/// A text that ends at `right`, beside a line at the height `y`.
void TextBefore(CCanvas& canvas, int right, int y, const std::string& text) {
    canvas.Text(right - CCanvas::GetTextWidth(text), y - CCanvas::kTextHeight / 2, text, kInk);
}

} // namespace

CSoundPicture::CSoundPicture(const TDataFormat_AudioPcm& format, std::uint64_t frames, std::string title)
    : format_(format), frames_(std::max<std::uint64_t>(frames, 1)), title_(std::move(title)),
      lanes_(std::min(format.channels, kMaxLanes)), extremes_(std::size_t{lanes_} * kColumns),
      spectrogram_(format.channels, frames, kColumns) {}

void CSoundPicture::Write(const float* samples, std::size_t frames) {
    spectrogram_.Write(samples, frames);
    for (; frames > 0; --frames, ++frame_) {
        // A frame of a short sound fills several columns.
        const std::uint64_t first = std::min<std::uint64_t>(frame_ * kColumns / frames_, kColumns - 1);
        const std::uint64_t next = std::min<std::uint64_t>((frame_ + 1) * kColumns / frames_, kColumns);
        for (std::uint64_t column = first; column < std::max(next, first + 1); ++column) {
            for (std::uint32_t i = 0; i < lanes_; ++i) {
                TExtremes& extremes = extremes_[i * std::size_t{kColumns} + static_cast<std::size_t>(column)];
                if (!extremes.isSet) extremes = {samples[i], samples[i], true};
                extremes.lowest = std::min(extremes.lowest, samples[i]);
                extremes.highest = std::max(extremes.highest, samples[i]);
            }
        }
        samples += format_.channels;
    }
}

std::vector<std::uint8_t> CSoundPicture::ToPng() {
    spectrogram_.Finish();
    const int lane = GetLaneHeight(lanes_);
    const int spectrumTop = kTop + static_cast<int>(lanes_) * (lane + kGap);
    const int height = spectrumTop + kSpectrumHeight + kBottom;
    CCanvas canvas(kWidth, static_cast<std::uint32_t>(height), kGround);
    canvas.Text(kLeft, 8, title_, kInk);
    for (std::uint32_t i = 0; i < lanes_; ++i)
        DrawWaveform(canvas, i, kTop + static_cast<int>(i) * (lane + kGap));
    DrawSpectrogram(canvas, spectrumTop);
    DrawLegend(canvas, spectrumTop);
    DrawTimes(canvas, spectrumTop + kSpectrumHeight);
    return canvas.ToPng();
}

void CSoundPicture::DrawWaveform(CCanvas& canvas, std::uint32_t channel, int top) const {
    const int height = GetLaneHeight(lanes_);
    const auto toRow = [&](double sample) {
        return top + static_cast<int>(std::lround((1 - std::clamp(sample, -1.0, 1.0)) / 2 * (height - 1)));
    };
    for (const double mark : {1.0, 0.5, 0.0, -0.5, -1.0}) {
        canvas.Fill(kLeft, toRow(mark), kColumns, 1, kGrid);
        // Those in between want room.
        if (height >= kWaveHeight / 2 || mark == 0) TextBefore(canvas, kLeft - 8, toRow(mark), ToText(mark));
    }
    for (int column = 0; column < kColumns; ++column) {
        const TExtremes& extremes =
            extremes_[channel * std::size_t{kColumns} + static_cast<std::size_t>(column)];
        if (!extremes.isSet) continue;
        const int first = toRow(extremes.highest);
        canvas.Fill(kLeft + column, first, 1, toRow(extremes.lowest) - first + 1, kWave);
    }
    if (lanes_ > 1)
        canvas.Text(kLeft + kColumns + 8, toRow(0) - CCanvas::kTextHeight / 2,
                    "ch " + std::to_string(channel + 1), kInk);
}

void CSoundPicture::DrawSpectrogram(CCanvas& canvas, int top) const {
    // A row has the highest level of the frequencies that fall into it.
    for (int row = 0; row < kSpectrumHeight; ++row) {
        const std::size_t below = static_cast<std::size_t>(kSpectrumHeight - 1 - row);
        const std::size_t first = below * CSpectrogram::kBins / kSpectrumHeight;
        const std::size_t end = std::max((below + 1) * CSpectrogram::kBins / kSpectrumHeight, first + 1);
        for (int column = 0; column < kColumns; ++column) {
            float level = kQuietest;
            for (std::size_t bin = first; bin < end; ++bin)
                level = std::max(level, spectrogram_.GetLevel(static_cast<std::size_t>(column), bin));
            canvas.Point(kLeft + column, top + row, GetHeat(level));
        }
    }
    const double highest = format_.samplesPerSec / 2000.0;
    const double step = GetStep(highest, 6);
    for (int i = 0; i * step <= highest * 0.97; ++i) {
        const double mark = i * step;
        const int row = top + static_cast<int>(std::lround((1 - mark / highest) * (kSpectrumHeight - 1)));
        canvas.Fill(kLeft - 6, row, 6, 1, kInk);
        TextBefore(canvas, kLeft - 10, row, ToText(mark) + (mark == 0 ? " kHz" : ""));
    }
}

void CSoundPicture::DrawLegend(CCanvas& canvas, int top) const {
    constexpr int kBarWidth = 16;
    const int left = kLeft + kColumns + 12;
    for (int row = 0; row < kSpectrumHeight; ++row) {
        const float level = kQuietest * (static_cast<float>(row) / kSpectrumHeight);
        canvas.Fill(left, top + row, kBarWidth, 1, GetHeat(level));
    }
    for (int level = 0; level > kQuietest; level -= 20) {
        const int row = top + level * kSpectrumHeight / kQuietest;
        canvas.Text(left + kBarWidth + 6, row, std::to_string(level) + (level == 0 ? " dB" : ""), kInk);
    }
}

void CSoundPicture::DrawTimes(CCanvas& canvas, int top) const {
    const double seconds = static_cast<double>(frames_) / std::max(format_.samplesPerSec, 1U);
    const double step = GetStep(seconds, 10);
    for (int i = 0; i * step <= seconds * 0.999; ++i) {
        const int column = kLeft + static_cast<int>(i * step / seconds * kColumns);
        const std::string text = ToText(i * step) + (i == 0 ? " s" : "");
        canvas.Fill(column, top, 1, 6, kInk);
        canvas.Text(column - CCanvas::GetTextWidth(text) / 2, top + 10, text, kInk);
    }
}
