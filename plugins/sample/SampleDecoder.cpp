#include "SampleDecoder.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/DecoderRefusal.h>
#include <vorlund/DecoderSupport.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <cstring>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/sample/SampleDecoder");
constexpr const wchar* kConnect = VRL_L("CSampleDecoder::Connect");

constexpr TFailure kNoPositions{kConnect, kFile, 1, VRL_L("Stream has no positions")};
constexpr TFailure kNoFile{kConnect, kFile, 2, VRL_L("No VSA file")};
constexpr TFailure kInvalidHeader{kConnect, kFile, 3, VRL_L("Invalid VSA header")};
constexpr TFailure kBeforeSamples{VRL_L("CSampleDecoder::Seek"), kFile, 4,
                                  VRL_L("Position before the samples")};

// The header.
constexpr std::int64_t kHeaderSize = 16;
constexpr char kMagic[] = {'V', 'S', 'A', '1'};
constexpr std::size_t kChannelsAt = 4;
constexpr std::size_t kBitsAt = 5;
constexpr std::size_t kReservedAt = 6;
constexpr std::size_t kRateAt = 8;
constexpr std::size_t kFramesAt = 12;
constexpr unsigned int kMaxChannels = 8;

/// A search of decoders goes on to the next one, anybody else gets the exception.
bool Refuse(const CRefusal& refusal, const TFailure& failure) {
    refusal.Raise<CDataFormatException>(failure);
    return false;
}

} // namespace

void CSampleDecoder::Connect(IInputStream* stream) {
    const CRefusal refusal(*this);
    TLayer::Connect(stream);
    if (!stream_) return;
    try {
        if (!ReadHeader(refusal)) Disconnect();
    } catch (...) {
        Disconnect();
        throw;
    }
}

bool CSampleDecoder::ReadHeader(const CRefusal& refusal) {
    constexpr std::uint32_t kNeeded = STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL;
    if ((stream_->GetCapabilities() & kNeeded) != kNeeded) return Refuse(refusal, kNoPositions);
    // Another decoder may have looked at the stream before.
    stream_->Seek(0);
    std::uint8_t header[kHeaderSize];
    if (!ReadWhole(*stream_, header, sizeof header)) return Refuse(refusal, kNoFile);
    if (std::memcmp(header, kMagic, sizeof kMagic) != 0) return Refuse(refusal, kNoFile);

    NoteContainer(VRL_L("VSA"));
    const unsigned int channels = header[kChannelsAt];
    const unsigned int bits = header[kBitsAt];
    const bool isValid = channels >= 1 && channels <= kMaxChannels && (bits == 8 || bits == 16) &&
                         header[kReservedAt] == 0 && header[kReservedAt + 1] == 0;
    if (!isValid) {
        // Who asks why finds these beside the exception.
        NoteValue(VRL_L("channels"), channels);
        NoteValue(VRL_L("bits"), bits);
        NoteValue(VRL_L("reserved"), LoadLittleEndian16(header + kReservedAt));
        return Refuse(refusal, kInvalidHeader);
    }
    format_ = {bits == 8 ? SAMPLE_FORMAT_8BIT : SAMPLE_FORMAT_16BIT, channels,
               LoadLittleEndian32(header + kRateAt)};
    const std::int64_t declared =
        std::int64_t{LoadLittleEndian32(header + kFramesAt)} * format_.GetBlockSize();
    length_ = std::min(declared, std::max<std::int64_t>(stream_->GetLength() - kHeaderSize, 0));
    position_ = 0;
    return true;
}

const TDataFormat& CSampleDecoder::GetFormat() {
    if (!stream_) return GetEmptyFormat();
    return format_;
}

void CSampleDecoder::Seek(std::int64_t position) {
    if (!stream_) return TLayer::Seek(position);
    if (position < 0) Raise<CIOException>(kBeforeSamples);
    // Every position behind the end counts as the end.
    position_ = std::min(position, length_);
    stream_->Seek(kHeaderSize + position_);
}

std::uint64_t CSampleDecoder::Read(void* buffer, std::uint64_t size) {
    // The layer checks the buffer and the connection.
    const std::uint64_t count = TLayer::Read(buffer, std::min(size, GetRest()));
    position_ += static_cast<std::int64_t>(count);
    return count;
}

void CSampleDecoder::Skip(std::uint64_t count) {
    if (!stream_) return;
    Seek(position_ + static_cast<std::int64_t>(std::min(count, GetRest())));
}

std::uint64_t CSampleDecoder::GetRest() const {
    return static_cast<std::uint64_t>(length_ - position_);
}
