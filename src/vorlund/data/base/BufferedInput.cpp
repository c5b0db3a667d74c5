#include "vorlund/data/base/BufferedInput.h"

#include "vorlund/data/base/LentBlock.h"
#include "vorlund/data/base/SmallCopy.h"

#include <vorlund/BufferedStream.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace vorlund {
namespace {

bool HasPositions(IInputStream& stream) {
    constexpr std::uint32_t kPositions = STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL;
    return (stream.GetCapabilities() & kPositions) == kPositions;
}

} // namespace

void CBufferedInput::SetBlockSize(std::size_t size) {
    block_.reset(new std::uint8_t[size]);
    blockSize_ = size;
}

void CBufferedInput::Close() {
    Discard();
    CInputFilterImpl::Close();
}

void CBufferedInput::Flush() {
    if (const auto ahead = static_cast<std::int64_t>(Ahead())) {
        const CFilterCalls::CCall call(calls_);
        if (const auto stream = stream_; HasPositions(*stream)) {
            stream->Seek(stream->Tell() - ahead);
            if (call.IsUnchanged()) Discard();
        }
        if (!call.IsAlive()) return;
    }
    CInputFilterImpl::Flush();
}

void CBufferedInput::Seek(std::int64_t position) {
    const CFilterCalls::CCall call(calls_);
    CInputFilterImpl::Seek(position);
    if (call.IsAlive()) Discard();
}

std::int64_t CBufferedInput::Tell() {
    const auto ahead = static_cast<std::int64_t>(Ahead());
    return CInputFilterImpl::Tell() - ahead;
}

bool CBufferedInput::Eof() {
    return Ahead() == 0 && !failure_ && CInputFilterImpl::Eof();
}

const TDataFormat& CBufferedInput::GetFormat() {
    return stream_ ? stream_->GetFormat() : GetEmptyFormat();
}

std::uint64_t CBufferedInput::Read(void* buffer, std::uint64_t size) {
    // Not for 0 bytes, which need a connected stream as well.
    if (size - 1 < Ahead() && buffer) {
        CopySmall(buffer, next_, static_cast<std::size_t>(size));
        next_ += size;
        return size;
    }
    if (!buffer || !stream_ || !block_) return filterdefaults::Read(stream_.Get(), buffer, size);
    return ReadMore(static_cast<std::uint8_t*>(buffer), size);
}

void CBufferedInput::Skip(std::uint64_t count) {
    const std::uint64_t known = std::min<std::uint64_t>(count, Ahead());
    next_ += known;
    count -= known;
    if (count == 0 || !stream_) return;
    const CFilterCalls::CCall call(calls_);
    const auto stream = stream_;
    if (HasPositions(*stream)) {
        const std::int64_t position = stream->Tell();
        const auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max() - position);
        stream->Seek(position + static_cast<std::int64_t>(std::min(count, most)));
        return;
    }
    while (count > 0 && call.IsUnchanged() && block_ && Fill() && call.IsUnchanged() && Ahead() > 0) {
        const std::uint64_t part = std::min<std::uint64_t>(count, Ahead());
        next_ += part;
        count -= part;
    }
}

void CBufferedInput::Disconnect() {
    Discard();
    CInputFilterImpl::Disconnect();
}

void CBufferedInput::GiveBack() {
    Discard();
    CInputFilterImpl::GiveBack();
}

void CBufferedInput::Discard() {
    calls_.NoteChange();
    next_ = end_ = nullptr;
    failure_ = nullptr;
}

std::uint64_t CBufferedInput::ReadMore(std::uint8_t* buffer, std::uint64_t size) {
    std::uint64_t total = Ahead();
    if (total == 0 && failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
    if (total > 0) std::memcpy(buffer, next_, static_cast<std::size_t>(total));
    next_ = end_;
    const CFilterCalls::CCall call(calls_);
    const auto stream = stream_;
    try {
        while (total < size && call.IsUnchanged()) {
            const std::uint64_t wanted = size - total;
            if (wanted >= blockSize_) {
                // A stream that claims more than it was asked for has filled the room at most.
                const std::uint64_t count = std::min(stream->Read(buffer + total, wanted), wanted);
                total += count;
                if (count == 0) break;
                continue;
            }
            if (!Fill()) break;
            const std::uint64_t count = std::min<std::uint64_t>(wanted, Ahead());
            if (count == 0) break;
            std::memcpy(buffer + total, next_, static_cast<std::size_t>(count));
            next_ += count;
            total += count;
        }
    } catch (...) {
        if (total == 0) throw;
        if (call.IsUnchanged()) failure_ = std::current_exception();
    }
    return total;
}

/// Reads a block, when nothing is ahead; false when the stream has used the filter so that what it read does
/// not count.
bool CBufferedInput::Fill() {
    const CLentBlock loan(calls_, block_);
    const std::uint64_t wanted = blockSize_;
    std::uint64_t count = 0;
    {
        const auto stream = stream_;
        count = std::min(stream->Read(loan.Get(), wanted), wanted);
    }
    if (!loan.IsUnchanged()) return false;
    next_ = loan.Get();
    end_ = next_ + count;
    return true;
}

IInputStreamFilter* CreateBufferedInput(std::size_t blockSize) {
    auto filter = CRefPtr<CBufferedInput>::Adopt(static_cast<CBufferedInput*>(NewObject<CBufferedInput>()));
    filter->SetBlockSize(std::max<std::size_t>(blockSize, 16));
    return filter.Detach();
}

} // namespace vorlund
