#include "MpegFrame.h"

namespace {

// By version (1; 2 and 2.5), layer and the index in the head; thousand bits per second.
constexpr std::uint16_t kBitRates[2][3][15] = {
    {{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
     {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
     {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320}},
    {{0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
     {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
     {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}},
};
constexpr std::uint32_t kRates[] = {44100, 48000, 32000};

// What stays the same in a stream: sync, version, layer and rate.
constexpr std::uint32_t kStreamBits = 0xFFFE0C00;

} // namespace

bool TMpegFrame::IsLike(const TMpegFrame& other) const {
    return (head & kStreamBits) == (other.head & kStreamBits);
}

std::optional<TMpegFrame> ParseMpegHead(const std::uint8_t* bytes) {
    TMpegFrame frame;
    frame.head = std::uint32_t{bytes[0]} << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
    const std::uint32_t version = frame.head >> 19 & 3;
    const std::uint32_t layer = frame.head >> 17 & 3;
    const std::uint32_t bitRate = frame.head >> 12 & 15;
    const std::uint32_t rate = frame.head >> 10 & 3;
    if (frame.head >> 21 != 0x7FF || version == 1 || layer == 0 || bitRate == 0 || bitRate == 15 || rate == 3)
        return {};
    frame.layer = static_cast<int>(4 - layer);
    frame.isLowRate = version != 3;
    frame.isMono = (frame.head >> 6 & 3) == 3;
    frame.samplesPerSec = kRates[rate] >> (version == 3 ? 0 : version == 2 ? 1 : 2);
    const std::uint32_t bitsPerSec = kBitRates[frame.isLowRate][frame.layer - 1][bitRate] * 1000u;
    const std::uint32_t padding = frame.head >> 9 & 1;
    if (frame.layer == 1) {
        frame.samples = 384;
        frame.size = (12 * bitsPerSec / frame.samplesPerSec + padding) * 4;
    } else {
        frame.samples = frame.layer == 3 && frame.isLowRate ? 576 : 1152;
        frame.size = frame.samples / 8 * bitsPerSec / frame.samplesPerSec + padding;
    }
    return frame;
}

bool IsMpegAt(CVirtualFile& file, std::int64_t position) {
    std::uint8_t bytes[kMpegHeadSize];
    file.Seek(position);
    if (file.Read(bytes, kMpegHeadSize) < kMpegHeadSize) return false;
    const auto first = ParseMpegHead(bytes);
    if (!first) return false;
    file.Seek(position + first->size);
    if (file.Read(bytes, kMpegHeadSize) < kMpegHeadSize) return position + first->size <= file.GetLength();
    const auto second = ParseMpegHead(bytes);
    return second && second->IsLike(*first);
}
