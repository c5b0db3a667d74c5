#include "Peaks.h"

#include <algorithm>
#include <cmath>

using namespace vorlund;

namespace {

// Samples of 8 bits scaled as the library scales them: -1.0 is -128, and 1.0 is cut to 127.
std::int8_t ToByte(float sample) {
    if (!(sample > -1)) return sample <= -1 ? -128 : 0;
    return static_cast<std::int8_t>(std::min(std::floor(sample * 128), 127.0F));
}

} // namespace

CPeaks::CPeaks(const TDataFormat_AudioPcm& format, std::uint64_t frames, std::uint32_t points)
    : channels_(format.channels), samplesPerSec_(format.samplesPerSec),
      framesPerPoint_(std::max<std::uint64_t>((frames + points - 1) / points, 1)) {}

void CPeaks::Write(const float* samples, std::size_t frames) {
    for (; frames > 0; --frames, ++frame_) {
        if (frame_ % framesPerPoint_ == 0) {
            for (std::uint32_t i = 0; i < channels_; ++i)
                points_.insert(points_.end(), 2, ToByte(samples[i]));
        }
        std::int8_t* extremes = points_.data() + points_.size() - std::size_t{channels_} * 2;
        for (std::uint32_t i = 0; i < channels_; ++i, extremes += 2) {
            const std::int8_t sample = ToByte(*samples++);
            extremes[0] = std::min(extremes[0], sample);
            extremes[1] = std::max(extremes[1], sample);
        }
    }
}

std::string CPeaks::ToJson() const {
    std::string text =
        "{\"version\":2,\"channels\":" + std::to_string(channels_) +
        ",\"sample_rate\":" + std::to_string(samplesPerSec_) +
        ",\"samples_per_pixel\":" + std::to_string(framesPerPoint_) +
        ",\"bits\":8,\"length\":" + std::to_string(points_.size() / (std::size_t{channels_} * 2)) +
        ",\"data\":[";
    for (const std::int8_t point : points_) {
        if (text.back() != '[') text += ',';
        text += std::to_string(int{point});
    }
    return text + "]}\n";
}
