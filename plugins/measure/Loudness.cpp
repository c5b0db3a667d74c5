#include "Loudness.h"

#include "Loudspeakers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

using namespace vorlund;

namespace {

// ITU-R BS.1770: the loudness of a power is 10 lg(power) - 0.691.
constexpr double kOffset = -0.691;

constexpr unsigned long kTenthMilliseconds = 100;

// The library's lowest value is that of "nothing".
double OrNothing(double loudness) {
    return std::isfinite(loudness) ? loudness : -std::numeric_limits<double>::infinity();
}

} // namespace

CLoudness::CLoudness(const TAudioMeterSettings& settings)
    : state_(ebur128_init(settings.channels, settings.samplesPerSec,
                          EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK)),
      channels_(settings.channels), tenth_(std::max(settings.samplesPerSec / 10, 1U)) {
    if (!state_) throw std::bad_alloc();
    const std::vector<int> positions = GetPositions(settings.channels, settings.channelMask);
    for (std::uint32_t channel = 0; channel < channels_; ++channel) {
        ebur128_set_channel(state_.get(), channel, positions[channel]);
    }
}

void CLoudness::Write(const float* samples, std::size_t frames) {
    while (frames > 0) {
        const std::size_t count = std::min<std::size_t>(frames, untilTenth_);
        if (ebur128_add_frames_float(state_.get(), samples, count) != EBUR128_SUCCESS) throw std::bad_alloc();
        samples += count * channels_;
        frames -= count;
        untilTenth_ -= static_cast<std::uint32_t>(count);
        if (untilTenth_ > 0) continue;
        untilTenth_ = tenth_;
        double loudness = 0;
        ebur128_loudness_window(state_.get(), kTenthMilliseconds, &loudness);
        const double power = std::pow(10, (loudness - kOffset) / 10);
        momentary_.Add(power);
        shortTerm_.Add(power);
    }
}

double CLoudness::GetIntegrated() const {
    double loudness = 0;
    ebur128_loudness_global(state_.get(), &loudness);
    return OrNothing(loudness);
}

double CLoudness::GetRange() const {
    double range = 0;
    ebur128_loudness_range(state_.get(), &range);
    return range;
}

double CLoudness::GetTruePeak(std::uint32_t channel) const {
    double peak = 0;
    ebur128_true_peak(state_.get(), channel, &peak);
    return peak;
}

double CLoudness::ToLoudness(double power) {
    return power > 0 ? 10 * std::log10(power) + kOffset : -std::numeric_limits<double>::infinity();
}
