#include "vorlund/data/wav/WavHeader.h"

namespace vorlund::wav {

using riff::CFields;
using riff::TBytes;

CHeader::CHeader(const TWavWriterFormat& format, bool hasRoom64, const TBytes& metadata,
                 std::uint64_t metadataRoom)
    : hasRoom64_(hasRoom64), blockSize_(format.GetBlockSize()),
      isFloat_(format.sampleFormat == WAV_SAMPLE_FLOAT), description_(MakeDescription(format)),
      metadata_(metadata), room_(metadataRoom) {}

std::uint64_t CHeader::GetSize() const {
    return riff::kFileHeadSize + (hasRoom64_ ? riff::kHeadSize + riff::kDs64Size : 0) + description_.size() +
           (isFloat_ ? riff::kHeadSize + 4 : 0) + room_ + riff::kHeadSize;
}

std::uint64_t CHeader::GetRiffSize(std::uint64_t dataSize, std::uint64_t behind) const {
    return GetSize() - riff::kHeadSize + riff::Pad(dataSize) + behind;
}

bool CHeader::CanHold(std::uint64_t dataSize, std::uint64_t behind) const {
    if (dataSize > kMaxDataSize) return false;
    return hasRoom64_ || GetRiffSize(dataSize, behind) < riff::kSizeElsewhere;
}

TBytes CHeader::Make(std::uint64_t dataSize, std::uint64_t behind) const {
    const std::uint64_t riffSize = GetRiffSize(dataSize, behind);
    const std::uint64_t frames = blockSize_ == 0 ? 0 : dataSize / blockSize_;
    const bool is64 = riffSize >= riff::kSizeElsewhere;
    CFields fields;
    fields.Text(is64 ? "RF64" : "RIFF").Number(riff::Limit(riffSize), 4).Text("WAVE");
    if (is64) {
        // The last field is the length of a table, which is not needed.
        fields.Text("ds64").Number(riff::kDs64Size, 4);
        fields.Number(riffSize, 8).Number(dataSize, 8).Number(frames, 8).Number(0, 4);
    } else if (hasRoom64_) {
        AppendFree(fields, riff::kHeadSize + riff::kDs64Size);
    }
    fields.Bytes(description_);
    if (isFloat_) fields.Text("fact").Number(4, 4).Number(riff::Limit(frames), 4);
    fields.Bytes(metadata_);
    AppendFree(fields, room_ - metadata_.size());
    return fields.Text("data").Number(is64 ? riff::kSizeElsewhere : dataSize, 4).Get();
}

bool CHeader::Replace(const TBytes& metadata) {
    const bool fits =
        metadata.size() == room_ || (metadata.size() < room_ && room_ - metadata.size() >= riff::kHeadSize);
    metadata_ = fits ? metadata : TBytes();
    return fits;
}

void AppendFree(CFields& fields, std::uint64_t size) {
    if (size == 0) return;
    const std::uint64_t body = size - riff::kHeadSize;
    fields.Text("JUNK").Number(body, 4).Zeros(static_cast<std::size_t>(body));
}

} // namespace vorlund::wav
