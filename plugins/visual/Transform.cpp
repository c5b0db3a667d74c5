#include "Transform.h"

#include <unsupported/Eigen/FFT>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

struct CTransform::TPlan {
    Eigen::FFT<double> fft;
    std::vector<std::complex<double>> spectrum;
};

CTransform::CTransform(std::size_t size)
    : size_(size), plan_(std::make_unique<TPlan>()), window_(size), windowed_(size), powers_(size / 2 + 1) {
    plan_->fft.SetFlag(Eigen::FFT<double>::HalfSpectrum);
    plan_->spectrum.resize(size / 2 + 1);
    // A sine of full scale has half of the window's sum, which is half of its length.
    const double fullScale = static_cast<double>(size) / 4;
    for (std::size_t i = 0; i < size; ++i) {
        const double angle = 2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(size);
        window_[i] = (0.5 - 0.5 * std::cos(angle)) / fullScale;
    }
}

CTransform::~CTransform() = default;

const std::vector<double>& CTransform::Apply(const TSound& sound) {
    std::fill(powers_.begin(), powers_.end(), 0.0);
    const std::size_t first = sound.centre - size_ / 2;
    for (std::uint32_t channel = 0; channel < sound.channels; ++channel) {
        const float* sample = sound.samples + first * sound.channels + channel;
        bool isSilent = true;
        for (std::size_t i = 0; i < size_; ++i, sample += sound.channels) {
            isSilent = isSilent && *sample == 0;
            windowed_[i] = static_cast<double>(*sample) * window_[i];
        }
        if (isSilent) continue;
        plan_->fft.fwd(plan_->spectrum.data(), windowed_.data(), static_cast<Eigen::Index>(size_));
        for (std::size_t i = 0; i < powers_.size(); ++i)
            powers_[i] = std::max(powers_[i], std::norm(plan_->spectrum[i]));
    }
    return powers_;
}
