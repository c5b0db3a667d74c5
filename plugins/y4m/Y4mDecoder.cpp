#include "Y4mDecoder.h"

#include "Y4mFile.h"

#include "../support/FileInput.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <cstring>
#include <utility>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/y4m/Y4mDecoder");
constexpr const wchar* kConnect = VRL_L("CY4mDecoder::Connect");

constexpr TFailure kNoPositions{kConnect, kFile, 1, VRL_L("Stream has no positions")};
constexpr TFailure kDecoded{kConnect, kFile, 2, VRL_L("Stream is decoded already")};

} // namespace

CY4mDecoder::CY4mDecoder() = default;
CY4mDecoder::~CY4mDecoder() noexcept(false) = default;

void CY4mDecoder::Connect(IInputStream* stream) {
    auto next = BeginConnect(stream);
    if (!next) return;
    if (!HasPositions(*next)) Raise<CDataFormatException>(kNoPositions);
    if (IsDecoded(*next)) Raise<CDataFormatException>(kDecoded);
    const CFilterCalls::CCall call(calls_);
    auto file = std::make_shared<CY4mFile>(*next);
    // The stream may have connected or destroyed this decoder meanwhile; that holds.
    if (!call.IsUnchanged()) return;
    stream_ = std::move(next);
    file_ = std::move(file);
    length_ = file_->GetFrames() * GetFrameSize();
}

void CY4mDecoder::Disconnect() {
    file_.reset();
    part_ = {};
    partAt_ = -1;
    CPositionedFilter::Disconnect();
}

const TDataFormat& CY4mDecoder::GetFormat() {
    if (!file_) return GetEmptyFormat();
    return file_->GetFormat();
}

std::int64_t CY4mDecoder::GetFrameSize() const {
    return file_->GetFormat().image.GetSizeInBytes();
}

std::uint64_t CY4mDecoder::Read(void* buffer, std::uint64_t size) {
    // The layer checks the buffer and the connection.
    if (!buffer || !file_) return CPositionedFilter::Read(buffer, size);
    // The stream may use this decoder inside each call.
    const auto stream = stream_;
    const auto file = file_;
    const CFilterCalls::CCall call(calls_);
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    const std::uint64_t wanted = Limit(size);
    const std::int64_t frameSize = GetFrameSize();
    std::uint64_t total = 0;
    while (total < wanted) {
        std::uint64_t count = 0;
        if (position_ % frameSize == 0 && wanted - total >= static_cast<std::uint64_t>(frameSize)) {
            if (file->ReadFrame(position_ / frameSize, bytes + total))
                count = static_cast<std::uint64_t>(frameSize);
        } else {
            count = ReadPart(*file, bytes + total, wanted - total);
        }
        if (!call.IsUnchanged()) break;
        // The file may have turned out to be shorter.
        length_ = file->GetFrames() * frameSize;
        if (count == 0) break;
        total += count;
        position_ += static_cast<std::int64_t>(count);
    }
    return total;
}

std::uint64_t CY4mDecoder::ReadPart(CY4mFile& file, std::uint8_t* buffer, std::uint64_t size) {
    const std::int64_t frameSize = GetFrameSize();
    const std::int64_t frame = position_ / frameSize;
    const std::int64_t inside = position_ % frameSize;
    if (partAt_ != frame) {
        // Not into the member: the stream may destroy it.
        std::vector<std::uint8_t> part(static_cast<std::size_t>(frameSize));
        const CFilterCalls::CCall call(calls_);
        const bool isRead = file.ReadFrame(frame, part.data());
        if (!call.IsUnchanged() || !isRead) return 0;
        part_ = std::move(part);
        partAt_ = frame;
    }
    const std::uint64_t count = std::min(size, static_cast<std::uint64_t>(frameSize - inside));
    std::memcpy(buffer, part_.data() + inside, static_cast<std::size_t>(count));
    return count;
}
