#include "vorlund/data/base/BufferedOutput.h"

#include "vorlund/data/base/SmallCopy.h"

#include <vorlund/BufferedStream.h>

#include <algorithm>
#include <utility>

namespace vorlund {

/// The block, in the hands of the stream. It outlives the filter, which the stream may destroy. What the
/// stream does not take goes back.
class CBufferedOutput::CLoan {
public:
    explicit CLoan(CBufferedOutput& filter)
        : filter_(filter), call_(filter.calls_), collected_(filter.Collected()),
          block_(std::move(filter.block_)) {
        filter.next_ = filter.limit_ = nullptr;
    }
    CLoan(const CLoan&) = delete;
    CLoan& operator=(const CLoan&) = delete;
    ~CLoan() {
        if (!call_.IsAlive()) return;
        filter_.block_ = std::move(block_);
        filter_.Restart(call_.IsUnchanged() ? collected_ : 0);
    }

    void WriteTo(IOutputStream& stream) {
        stream.Write(block_.get(), collected_);
        collected_ = 0;
    }

private:
    CBufferedOutput& filter_;
    const CFilterCalls::CCall call_;
    std::size_t collected_;
    std::unique_ptr<std::uint8_t[]> block_;
};

void CBufferedOutput::SetBlockSize(std::size_t size) {
    block_.reset(new std::uint8_t[size]);
    blockSize_ = size;
    Restart(0);
}

void CBufferedOutput::WriteOut() {
    if (!block_ || Collected() == 0) return;
    CLoan loan(*this);
    // Given back before the block is.
    const auto stream = stream_;
    loan.WriteTo(*stream);
}

/// Writes out what was collected, then acts on the stream that was connected before.
template <class TAct> void CBufferedOutput::WriteOutAnd(TAct act) {
    const CFilterCalls::CCall call(calls_);
    WriteOut();
    if (call.IsAlive()) act();
}

void CBufferedOutput::Close() {
    const CFilterCalls::CCall call(calls_);
    const auto stream = stream_;
    try {
        if (call.IsAlive()) WriteOut();
    } catch (...) {
        if (call.IsAlive()) Restart(0);
        stream->Close();
        throw;
    }
    if (stream) stream->Close();
}

std::int64_t CBufferedOutput::GetLength() {
    std::int64_t length = 0;
    WriteOutAnd([&] { length = COutputFilterImpl::GetLength(); });
    return length;
}

void CBufferedOutput::Flush() {
    WriteOutAnd([&] { COutputFilterImpl::Flush(); });
}

void CBufferedOutput::Seek(std::int64_t position) {
    WriteOutAnd([&] { COutputFilterImpl::Seek(position); });
}

std::int64_t CBufferedOutput::Tell() {
    const auto collected = static_cast<std::int64_t>(block_ ? Collected() : 0);
    return COutputFilterImpl::Tell() + collected;
}

void CBufferedOutput::SetFormat(const TDataFormat* format) {
    WriteOutAnd([&] { COutputFilterImpl::SetFormat(format); });
}

void CBufferedOutput::Write(const void* buffer, std::uint64_t size) {
    // Not for 0 bytes, which need a connected stream as well.
    if (size - 1 < static_cast<std::size_t>(limit_ - next_) && buffer) {
        CopySmall(next_, buffer, static_cast<std::size_t>(size));
        next_ += size;
        return;
    }
    if (!buffer || !stream_ || !block_)
        WriteOutAnd([&] { filterdefaults::Write(stream_.Get(), buffer, size); });
    else
        WriteMore(static_cast<const std::uint8_t*>(buffer), size);
}

bool CBufferedOutput::Connect(IOutputStream* stream) {
    const CFilterCalls::CCall call(calls_);
    COutputFilterImpl::Connect(stream);
    if (call.IsAlive() && block_) Restart(Collected());
    return true;
}

void CBufferedOutput::Disconnect() {
    const CFilterCalls::CCall call(calls_);
    try {
        WriteOut();
    } catch (...) {
        if (call.IsAlive()) LetGo();
        throw;
    }
    if (call.IsAlive()) LetGo();
}

void CBufferedOutput::GiveBack() {
    try {
        WriteOut();
    } catch (...) {
        // Nobody can be told: an owner that wants to know flushes or closes before.
    }
    Drop();
    COutputFilterImpl::GiveBack();
}

/// Forgets what was collected, and collects nothing until there is a stream.
void CBufferedOutput::Drop() {
    next_ = limit_ = block_.get();
}

/// Releases the stream, which may use the filter once more.
void CBufferedOutput::LetGo() {
    const CFilterCalls::CCall call(calls_);
    Drop();
    COutputFilterImpl::Disconnect();
    if (call.IsAlive() && block_) Restart(Collected());
}

/// The block has so many bytes, and room for more when there is a stream.
void CBufferedOutput::Restart(std::size_t collected) {
    next_ = block_.get() + collected;
    limit_ = stream_ ? block_.get() + blockSize_ : next_;
}

void CBufferedOutput::WriteMore(const std::uint8_t* bytes, std::uint64_t size) {
    // Whole blocks: files take them in the shortest time.
    const std::uint64_t first = std::min<std::uint64_t>(size, static_cast<std::size_t>(limit_ - next_));
    const bool fills = Collected() > 0 && size < blockSize_;
    if (fills) {
        CopySmall(next_, bytes, static_cast<std::size_t>(first));
        next_ += first;
    }
    const CFilterCalls::CCall call(calls_);
    try {
        WriteOut();
    } catch (...) {
        // The caller knows that these are not taken.
        if (fills && call.IsUnchanged()) next_ -= first;
        throw;
    }
    if (!call.IsAlive()) return;
    if (fills) {
        bytes += first;
        size -= first;
    }
    if (size == 0) return;
    if (size > static_cast<std::size_t>(limit_ - next_) || !call.IsUnchanged()) {
        filterdefaults::Write(stream_.Get(), bytes, size);
        return;
    }
    std::memcpy(next_, bytes, static_cast<std::size_t>(size));
    next_ += size;
}

IOutputStreamFilter* CreateBufferedOutput(std::size_t blockSize) {
    auto filter =
        CRefPtr<CBufferedOutput>::Adopt(static_cast<CBufferedOutput*>(NewObject<CBufferedOutput>()));
    filter->SetBlockSize(std::max<std::size_t>(blockSize, 16));
    return filter.Detach();
}

} // namespace vorlund
