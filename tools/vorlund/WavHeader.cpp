#include "WavHeader.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::uint32_t kFmtSize = 16;
constexpr std::uint32_t kIntegerPcm = 1;
/// What the RIFF size counts besides the data: "WAVE", the fmt chunk and the head of the data chunk.
constexpr std::uint64_t kRiffOverhead = kWavHeaderSize - 8;

/// Appends little-endian fields.
class CFields {
public:
    CFields& Text(const char (&text)[5]) {
        at_ = std::copy_n(text, 4, at_);
        return *this;
    }
    CFields& Number(std::uint64_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) *at_++ = static_cast<std::uint8_t>(value >> 8 * i);
        return *this;
    }
    const auto& Get() const { return header_; }

private:
    std::array<std::uint8_t, kWavHeaderSize> header_{};
    decltype(header_)::iterator at_ = header_.begin();
};

std::uint64_t Limit(std::uint64_t size) {
    return std::min<std::uint64_t>(size, std::numeric_limits<std::uint32_t>::max());
}

} // namespace

std::array<std::uint8_t, kWavHeaderSize> MakeWavHeader(const vorlund::TDataFormat_AudioPcm& format,
                                                       std::uint64_t dataSize) {
    // Chunks are padded to even sizes.
    const std::uint64_t riffSize = kRiffOverhead + dataSize + dataSize % 2;
    return CFields()
        .Text("RIFF")
        .Number(Limit(riffSize), 4)
        .Text("WAVE")
        .Text("fmt ")
        .Number(kFmtSize, 4)
        .Number(kIntegerPcm, 2)
        .Number(format.channels, 2)
        .Number(format.samplesPerSec, 4)
        .Number(format.GetBytesPerSec(), 4)
        .Number(format.GetBlockSize(), 2)
        .Number(format.GetSampleSize() * 8, 2)
        .Text("data")
        .Number(Limit(dataSize), 4)
        .Get();
}
