#include "WavHeader.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::uint32_t kIntegerPcm = 1;
constexpr std::uint32_t kIeeeFloat = 3;

/// Appends little-endian fields.
class CFields {
public:
    CFields& Text(const char (&text)[5]) {
        header_.insert(header_.end(), text, text + 4);
        return *this;
    }
    CFields& Number(std::uint64_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) header_.push_back(static_cast<std::uint8_t>(value >> 8 * i));
        return *this;
    }
    CFields& Bytes(const std::vector<std::uint8_t>& bytes) {
        header_.insert(header_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    const auto& Get() const { return header_; }

private:
    std::vector<std::uint8_t> header_;
};

std::uint64_t Limit(std::uint64_t size) {
    return std::min<std::uint64_t>(size, std::numeric_limits<std::uint32_t>::max());
}

/// Everything between the head of the file and the bytes of PCM.
std::vector<std::uint8_t> MakeBody(const vorlund::TDataFormat_AudioPcm& format, std::uint64_t dataSize) {
    const bool isFloat = format.sampleFormat == vorlund::SAMPLE_FORMAT_FLOAT;
    CFields fields;
    fields.Text("WAVE")
        .Text("fmt ")
        .Number(isFloat ? 18 : 16, 4)
        .Number(isFloat ? kIeeeFloat : kIntegerPcm, 2)
        .Number(format.channels, 2)
        .Number(format.samplesPerSec, 4)
        .Number(format.GetBytesPerSec(), 4)
        .Number(format.GetBlockSize(), 2)
        .Number(format.GetSampleSize() * 8, 2);
    if (isFloat) {
        const std::uint32_t block = format.GetBlockSize();
        const std::uint64_t frames = block == 0 ? 0 : dataSize / block;
        // No bytes of extension follow.
        fields.Number(0, 2).Text("fact").Number(4, 4).Number(Limit(frames), 4);
    }
    return fields.Text("data").Number(Limit(dataSize), 4).Get();
}

} // namespace

std::vector<std::uint8_t> MakeWavHeader(const vorlund::TDataFormat_AudioPcm& format, std::uint64_t dataSize) {
    const std::vector<std::uint8_t> body = MakeBody(format, dataSize);
    // Chunks are padded to even sizes.
    const std::uint64_t riffSize = body.size() + dataSize + dataSize % 2;
    return CFields().Text("RIFF").Number(Limit(riffSize), 4).Bytes(body).Get();
}
