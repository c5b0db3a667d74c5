#include "Spectrogram.h"

#include <unsupported/Eigen/FFT>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace {

constexpr float kLowest = -200;
constexpr std::size_t kLongestStep = CSpectrogram::kSize / 2;

} // namespace

struct CSpectrogram::TTransform {
    TTransform() : window(kSize), windowed(kSize) {
        fft.SetFlag(Eigen::FFT<float>::HalfSpectrum);
        for (std::size_t i = 0; i < kSize; ++i) {
            const double angle = 2 * std::numbers::pi * static_cast<double>(i) / kSize;
            window[i] = static_cast<float>(0.5 - 0.5 * std::cos(angle));
        }
    }
    Eigen::FFT<float> fft;
    std::vector<float> window;
    std::vector<float> windowed;
    std::vector<std::complex<float>> spectrum;
};

CSpectrogram::CSpectrogram(std::uint32_t channels, std::uint64_t frames, std::size_t columns)
    : channels_(channels), frames_(std::max<std::uint64_t>(frames, 1)), columns_(columns),
      step_(static_cast<std::size_t>(std::clamp<std::uint64_t>(frames_ / columns, 1, kLongestStep))),
      transform_(std::make_unique<TTransform>()), levels_(columns * kBins, kLowest) {
    // The first piece has the first frame in its middle.
    piece_.assign(kSize / 2, 0.0F);
    piece_.reserve(kSize);
}

CSpectrogram::~CSpectrogram() = default;

void CSpectrogram::Write(const float* samples, std::size_t frames) {
    for (; frames > 0; --frames) {
        float sum = 0;
        for (std::uint32_t i = 0; i < channels_; ++i) sum += *samples++;
        sum /= static_cast<float>(channels_);
        piece_.push_back(std::isfinite(sum) ? sum : 0);
        if (piece_.size() == kSize) Transform();
    }
}

void CSpectrogram::Finish() {
    while (middle_ < frames_) {
        piece_.resize(kSize, 0.0F);
        Transform();
    }
}

void CSpectrogram::Transform() {
    TTransform& transform = *transform_;
    std::transform(piece_.begin(), piece_.end(), transform.window.begin(), transform.windowed.begin(),
                   [](float sample, float weight) { return sample * weight; });
    transform.fft.fwd(transform.spectrum, transform.windowed);
    // A piece of a short sound fills several columns.
    const std::uint64_t first = std::min<std::uint64_t>(middle_ * columns_ / frames_, columns_ - 1);
    const std::uint64_t next = std::min<std::uint64_t>((middle_ + step_) * columns_ / frames_, columns_);
    // A sine of full scale has half of the window's sum, which is half of its length.
    constexpr float kFullScale = static_cast<float>(kSize) / 4;
    for (std::size_t bin = 0; bin < kBins; ++bin) {
        const float level = 20 * std::log10(std::abs(transform.spectrum[bin]) / kFullScale);
        for (std::uint64_t column = first; column < std::max(next, first + 1); ++column) {
            float& kept = levels_[static_cast<std::size_t>(column) * kBins + bin];
            if (level > kept) kept = level;
        }
    }
    piece_.erase(piece_.begin(), piece_.begin() + static_cast<std::ptrdiff_t>(step_));
    middle_ += step_;
}
