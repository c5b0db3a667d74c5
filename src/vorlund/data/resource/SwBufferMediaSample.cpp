#include "vorlund/data/resource/SwBufferMediaSample.h"

#include <vorlund/Exception.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamErrors.h>
#include <vorlund/StreamSelector.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/SwBufferMediaSample");
constexpr TFailure kWriteToNothing{VRL_L("vorlund::CSwBufferMediaSample::WriteTo"), kFile, 94,
                                   VRL_L("Stream pointer is NULL")};
constexpr TFailure kFormatIsNull{VRL_L("vorlund::CSwBufferMediaSample::SetFormat"), kFile, 127,
                                 VRL_L("format is NULL")};

constexpr std::uint32_t kFirstBufferSize = 4096;

} // namespace

CSwBufferMediaSample::CSwBufferMediaSample() {
    CSwBufferMediaSample::SetBufferSize(kFirstBufferSize);
}

IMediaSample* CSwBufferMediaSample::Clone() {
    return static_cast<IMediaSample*>(NewObject<CSwBufferMediaSample>());
}

bool CSwBufferMediaSample::ReadFrom(const CInputStreamSelector& source) {
    if (bufferSize_ == 0) return false;
    IInputStream* const stream = source.GetInputStreamTmp();
    SetFormat(&stream->GetFormat());
    std::uint32_t filled = 0;
    while (filled < bufferSize_) {
        const std::uint32_t space = bufferSize_ - filled;
        const std::uint64_t count = stream->Read(buffer_.get() + filled, space);
        if (count == 0) break;
        // A stream may claim more than it was asked for.
        filled += static_cast<std::uint32_t>(std::min<std::uint64_t>(count, space));
    }
    SetDataSize(filled);
    return filled > 0;
}

void CSwBufferMediaSample::WriteTo(const COutputStreamSelector& target) {
    IOutputStream* const stream = target.GetOutputStreamTmp();
    if (!stream) Raise<CNullPtrException>(kWriteToNothing);
    // The data size may exceed the buffer: see SetDataSize.
    stream->Write(buffer_.get(), std::min(dataSize_, bufferSize_));
    // Who writes a sample may never close the stream, and what waits in a buffer has not been written.
    FlushOutput(*stream);
}

ISwBufferMediaSample* CSwBufferMediaSample::SetDataSize(std::uint32_t size) {
    // Kept for callers: the former data size is tested, not the new one, so a size beyond the buffer is taken
    // as it is and the buffer follows one call later.
    if (dataSize_ > bufferSize_) {
        TBlock block = std::make_unique_for_overwrite<std::byte[]>(dataSize_);
        // What ReadFrom has just read must survive.
        std::memcpy(block.get(), buffer_.get(), bufferSize_);
        ReplaceBuffer(std::move(block), dataSize_);
    }
    dataSize_ = size;
    return this;
}

void CSwBufferMediaSample::SetFormat(const TDataFormat* format) {
    if (!format) Raise<CNullPtrException>(kFormatIsNull);
    format_.Set(*format);
}

void CSwBufferMediaSample::SetBufferSize(std::uint32_t size) {
    if (size != bufferSize_) ReplaceBuffer(std::make_unique_for_overwrite<std::byte[]>(size), size);
}

void CSwBufferMediaSample::ReplaceBuffer(TBlock block, std::uint32_t size) {
    buffer_ = std::move(block);
    bufferSize_ = size;
    dataSize_ = 0;
}

} // namespace vorlund
