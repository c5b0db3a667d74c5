// Without a record of the encoder the library below estimates the length from the size of the file, and stops
// reading there, which loses sound when the bit rate varies. With a record that it understands it is exact,
// so this makes one.
#include "MpegHead.h"

#include "GaplessTag.h"
#include "MpegFrame.h"
#include "Notes.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace {

// The record: a word, flags, then what the flags announce, then the part that LAME added.
constexpr std::uint32_t kHasFrames = 1;
constexpr std::uint32_t kHasBytes = 2;
constexpr std::uint32_t kHasTable = 4;
constexpr std::uint32_t kHasQuality = 8;
constexpr std::size_t kTableSize = 100;
constexpr std::size_t kNameSize = 9;
/// From the name of the encoder to the delays.
constexpr std::size_t kDelaysAt = 21;
constexpr std::size_t kLameSize = 24;
constexpr std::uint32_t kMaxDelay = 0xFFF;

// Bits of a frame's head.
constexpr std::uint32_t kNoChecksum = 1u << 16;
constexpr std::uint32_t kBitRateBits = 15u << 12;
constexpr std::uint32_t kPaddingBit = 1u << 9;
/// 128 or 80 thousand bits: every frame has room for the record.
constexpr std::uint32_t kRoomyBitRate = 9u << 12;

constexpr std::int64_t kBlockSize = 64 * 1024;

std::uint32_t LoadBigEndian32(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

void StoreBigEndian32(std::uint8_t* bytes, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}

/// What the record of the encoder tells.
struct TRecord {
    bool exists = false;
    bool hasFrames = false;
    bool hasEnds = false;
};

TRecord ReadRecord(CVirtualFile& file, std::int64_t start, const TMpegFrame& frame) {
    TRecord record;
    std::vector<std::uint8_t> bytes(frame.size);
    file.Seek(start);
    bytes.resize(static_cast<std::size_t>(file.Read(bytes.data(), frame.size)));
    std::size_t at = frame.GetInfoOffset();
    if (bytes.size() < at + 8) return record;
    record.exists = std::memcmp(&bytes[at], "Xing", 4) == 0 || std::memcmp(&bytes[at], "Info", 4) == 0;
    if (!record.exists) return record;
    const std::uint32_t flags = LoadBigEndian32(&bytes[at + 4]);
    record.hasFrames = (flags & kHasFrames) != 0;
    at += 8;
    if (flags & kHasFrames) at += 4;
    if (flags & kHasBytes) at += 4;
    if (flags & kHasTable) at += kTableSize;
    if (flags & kHasQuality) at += 4;
    record.hasEnds = record.hasFrames && bytes.size() >= at + kLameSize && bytes[at] != 0;
    return record;
}

/// Reads the heads of all frames, block by block.
class CFrameCounter {
public:
    CFrameCounter(CVirtualFile& file, const TMpegFrame& first) : file_(file), first_(first) {}

    /// Whole frames from `position` to the end. Where something else lies between them it looks for the next
    /// two.
    std::uint32_t Count(std::int64_t position) {
        std::uint32_t count = 0;
        bool isLost = false;
        while (const std::uint8_t* const bytes = At(position)) {
            const auto frame = ParseMpegHead(bytes);
            const bool isFrame = frame && frame->IsLike(first_) &&
                                 position + frame->size <= file_.GetLength() &&
                                 (!isLost || IsMpegAt(file_, position));
            isLost = !isFrame;
            position += isFrame ? frame->size : 1;
            count += isFrame;
        }
        return count;
    }

private:
    /// The bytes of a head at `position`, or null at the end.
    const std::uint8_t* At(std::int64_t position) {
        if (position < blockAt_ || position + kMpegHeadSize > blockAt_ + blockSize_) {
            file_.Seek(position);
            blockAt_ = position;
            blockSize_ = file_.Read(block_.data(), kBlockSize);
            if (blockSize_ < kMpegHeadSize) return nullptr;
        }
        return block_.data() + (position - blockAt_);
    }

    CVirtualFile& file_;
    const TMpegFrame& first_;
    std::vector<std::uint8_t> block_ = std::vector<std::uint8_t>(kBlockSize);
    std::int64_t blockAt_ = 0;
    std::int64_t blockSize_ = 0;
};

/// A frame without sound that holds the record.
std::vector<std::uint8_t> MakeRecord(const TMpegFrame& first, std::uint32_t frames,
                                     const std::optional<TGaplessTag>& ends) {
    std::uint8_t head[kMpegHeadSize];
    StoreBigEndian32(head, (first.head & ~(kBitRateBits | kPaddingBit)) | kRoomyBitRate | kNoChecksum);
    const auto frame = ParseMpegHead(head);
    std::vector<std::uint8_t> bytes(frame->size);
    std::memcpy(bytes.data(), head, sizeof head);
    std::uint8_t* const record = bytes.data() + frame->GetInfoOffset();
    constexpr char kMark[] = {'X', 'i', 'n', 'g'};
    std::memcpy(record, kMark, sizeof kMark);
    StoreBigEndian32(record + 4, kHasFrames);
    StoreBigEndian32(record + 8, frames);
    if (ends) {
        std::uint8_t* const lame = record + 12;
        std::memcpy(lame, "iTunes   ", kNameSize);
        const std::uint32_t delays = ends->delay << 12 | ends->padding;
        for (int i = 0; i < 3; ++i) lame[kDelaysAt + i] = static_cast<std::uint8_t>(delays >> (16 - 8 * i));
    }
    return bytes;
}

} // namespace

TMpegEnds CompleteMpegHead(CVirtualFile& file, std::int64_t start) {
    std::uint8_t bytes[kMpegHeadSize];
    file.Seek(start);
    if (file.Read(bytes, kMpegHeadSize) < kMpegHeadSize) return TMpegEnds::Unknown;
    const auto first = ParseMpegHead(bytes);
    // The other layers have no such record.
    if (!first || first->layer != 3) return TMpegEnds::Unknown;
    const TRecord record = ReadRecord(file, start, *first);
    if (record.hasEnds) return TMpegEnds::Exact;

    auto ends = ReadGaplessTag(file, start);
    if (ends && (ends->delay > kMaxDelay || ends->padding > kMaxDelay)) ends.reset();
    if (!ends) Note("no delay of the encoder is known: silence of the encoder is at both ends");
    if (record.hasFrames && !ends) return TMpegEnds::Unknown;
    const std::int64_t sound = record.exists ? start + first->size : start;
    const std::uint32_t frames = CFrameCounter(file, *first).Count(sound);
    file.Exchange(start, sound, MakeRecord(*first, frames, ends));
    return ends ? TMpegEnds::Exact : TMpegEnds::Unknown;
}
