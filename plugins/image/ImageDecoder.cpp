#include "ImageDecoder.h"

#include "JpegReader.h"
#include "PictureSource.h"
#include "PngReader.h"

#include "../support/FileInput.h"
#include "../support/PixelForm.h"

#include <vorlund/DecoderRefusal.h>
#include <vorlund/Exception.h>

#include <cstring>
#include <optional>
#include <utility>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/image/ImageDecoder");
constexpr const wchar* kConnect = VRL_L("CImageDecoder::Connect");

constexpr TFailure kNoPositions{kConnect, kFile, 1, VRL_L("Stream has no positions")};
constexpr TFailure kDecoded{kConnect, kFile, 2, VRL_L("Stream is decoded already")};
constexpr TFailure kUnknown{kConnect, kFile, 3, VRL_L("Not a picture of a known kind")};

/// Nothing if the stream is refused.
std::optional<TPicture> ReadPicture(IInputStream& stream, const CRefusal& refusal) {
    CPictureSource source(stream);
    if (IsPng(source.GetHead())) return ReadPng(source);
    if (IsJpeg(source.GetHead())) return ReadJpeg(source);
    source.RethrowFailure();
    refusal.Raise<CDataFormatException>(kUnknown);
    return std::nullopt;
}

} // namespace

void CImageDecoder::Connect(IInputStream* stream) {
    const CRefusal refusal(*this);
    auto next = BeginConnect(stream);
    if (!next) return;
    if (!HasPositions(*next)) return refusal.Raise<CDataFormatException>(kNoPositions);
    if (IsDecoded(*next)) return refusal.Raise<CDataFormatException>(kDecoded);
    const CFilterCalls::CCall call(calls_);
    std::optional<TPicture> picture = ReadPicture(*next, refusal);
    // The stream may have connected or destroyed this decoder meanwhile; that holds.
    if (!picture || !call.IsUnchanged()) return;
    stream_ = std::move(next);
    format_.pixelFormat = kPixelForm;
    format_.width = picture->width;
    format_.height = picture->height;
    pixels_ = std::move(picture->pixels);
    length_ = static_cast<std::int64_t>(pixels_.size());
}

void CImageDecoder::Disconnect() {
    pixels_ = {};
    CPositionedFilter::Disconnect();
}

const TDataFormat& CImageDecoder::GetFormat() {
    if (!IsConnected()) return GetEmptyFormat();
    return format_;
}

std::uint64_t CImageDecoder::Read(void* buffer, std::uint64_t size) {
    // The layer checks the buffer and the connection.
    if (!buffer || !IsConnected()) return CPositionedFilter::Read(buffer, size);
    const std::uint64_t count = Limit(size);
    if (count > 0) std::memcpy(buffer, pixels_.data() + position_, static_cast<std::size_t>(count));
    position_ += static_cast<std::int64_t>(count);
    return count;
}
