#include "vorlund/api/values/Arithmetic.h"

#include <vorlund/DataFormat.h>

namespace vorlund {
namespace {

constinit const TDataFormat kEmptyFormat;

} // namespace

const TDataFormat& GetEmptyFormat() {
    return kEmptyFormat;
}

constinit const TDataFormat_AudioPcm TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO{SAMPLE_FORMAT_16BIT, 1,
                                                                                     44100};
constinit const TDataFormat_AudioPcm TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO{SAMPLE_FORMAT_16BIT, 2,
                                                                                       44100};
constinit const TDataFormat_AudioPcm TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_51{SAMPLE_FORMAT_16BIT, 6,
                                                                                   44100};

constinit const TPixelFormat TPixelFormat::FORMAT_A1{0, 1, 1, 0, 0, 0, 0, 0, 0, 0};
constinit const TPixelFormat TPixelFormat::FORMAT_A8{0, 8, 8, 0, 0, 0, 0, 0, 0, 0};
constinit const TPixelFormat TPixelFormat::FORMAT_A8R8G8B8{0, 32, 8, 0, 8, 8, 8, 16, 8, 24};

// Kept for callers: the other layouts are all zeros.
constinit const TPixelFormat TPixelFormat::FORMAT_R3G3B2{};
constinit const TPixelFormat TPixelFormat::FORMAT_R5G6B5{};
constinit const TPixelFormat TPixelFormat::FORMAT_A1R5G5B5{};
constinit const TPixelFormat TPixelFormat::FORMAT_R5G5B5A1{};
constinit const TPixelFormat TPixelFormat::FORMAT_A2R2G2B2{};
constinit const TPixelFormat TPixelFormat::FORMAT_R2G2B2A2{};
constinit const TPixelFormat TPixelFormat::FORMAT_R8G8B8A8{};
constinit const TPixelFormat TPixelFormat::FORMAT_A2R10G10B10{};
constinit const TPixelFormat TPixelFormat::FORMAT_R10G10B10A2{};
constinit const TPixelFormat TPixelFormat::FORMAT_R11G11B10{};
constinit const TPixelFormat TPixelFormat::FORMAT_R16G16B16{};
constinit const TPixelFormat TPixelFormat::FORMAT_R16G16B16A16{};
constinit const TPixelFormat TPixelFormat::FORMAT_A16R16G16B16{};
constinit const TPixelFormat TPixelFormat::FORMAT_A32{};
constinit const TPixelFormat TPixelFormat::FORMAT_A32F{};
constinit const TPixelFormat TPixelFormat::FORMAT_A32R32G32B32{};
constinit const TPixelFormat TPixelFormat::FORMAT_R32G32B32A32{};
constinit const TPixelFormat TPixelFormat::FORMAT_A32R32G32B32F{};
constinit const TPixelFormat TPixelFormat::FORMAT_R32G32B32A32F{};

namespace {

std::int64_t TimeToIndex(double rate, float seconds) {
    return TruncateToInt64(rate * static_cast<double>(seconds));
}

float IndexToTime(std::int64_t index, double rate) {
    return static_cast<float>(static_cast<double>(index) / rate);
}

} // namespace

std::uint32_t TDataFormat_AudioPcm::GetSampleSize() const {
    switch (sampleFormat) {
    case SAMPLE_FORMAT_8BIT:
        return 1;
    case SAMPLE_FORMAT_16BIT:
        return 2;
    case SAMPLE_FORMAT_32BIT:
    case SAMPLE_FORMAT_FLOAT:
        return 4;
    default:
        return 0;
    }
}

std::uint32_t TDataFormat_AudioPcm::GetBlockSize() const {
    return GetSampleSize() * channels;
}

std::uint32_t TDataFormat_AudioPcm::GetBytesPerSec() const {
    return GetBlockSize() * samplesPerSec;
}

std::uint8_t TDataFormat_AudioPcm::GetZeroByte() const {
    return sampleFormat == SAMPLE_FORMAT_8BIT ? 128 : 0;
}

std::int64_t TDataFormat_AudioPcm::TimeToSample(float seconds) const {
    return TimeToIndex(samplesPerSec, seconds);
}

float TDataFormat_AudioPcm::SampleToTime(std::int64_t sample) const {
    return IndexToTime(sample, samplesPerSec);
}

std::int64_t TDataFormat_AudioPcm::TimeToByte(float seconds) const {
    return MultiplyWrapping(TimeToSample(seconds), GetBlockSize());
}

float TDataFormat_AudioPcm::ByteToTime(std::int64_t bytes) const {
    return IndexToTime(bytes, GetBytesPerSec());
}

std::uint32_t TDataFormat_ImageRgb::GetWidthInBytes() const {
    return (width * pixelFormat.bitsPerPixel) >> 3;
}

std::uint32_t TDataFormat_ImageRgb::GetSizeInPixels() const {
    return width * height;
}

std::uint32_t TDataFormat_ImageRgb::GetSizeInBytes() const {
    return (width * height * pixelFormat.bitsPerPixel) >> 3;
}

void TDataFormat_VideoRgb::SetDefaults() {
    *this = {};
    frameRate = 30;
    image.pixelFormat = TPixelFormat::FORMAT_A8R8G8B8;
    image.width = 640;
    image.height = 480;
}

std::int64_t TDataFormat_VideoRgb::TimeToFrame(float seconds) const {
    return TimeToIndex(static_cast<double>(frameRate), seconds);
}

float TDataFormat_VideoRgb::FrameToTime(std::int64_t frame) const {
    return IndexToTime(frame, static_cast<double>(frameRate));
}

std::int64_t TDataFormat_VideoRgb::TimeToByte(float seconds) const {
    return MultiplyWrapping(TimeToFrame(seconds), image.GetSizeInBytes());
}

float TDataFormat_VideoRgb::ByteToTime(std::int64_t bytes) const {
    // Kept for callers: a byte inside a frame belongs to the frame's start, unlike in audio.
    const std::uint32_t frameSize = image.GetSizeInBytes();
    return FrameToTime(frameSize == 0 ? 0 : bytes / frameSize);
}

} // namespace vorlund
