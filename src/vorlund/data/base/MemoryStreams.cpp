#include "vorlund/data/base/MemoryStreams.h"

#include "vorlund/data/base/SmallCopy.h"

#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>

#include <algorithm>
#include <limits>
#include <new>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/base/MemoryStreams");
constexpr const wchar* kNegative = VRL_L("Position is negative");
constexpr const wchar* kNoBuffer = VRL_L("buffer is NULL");

constexpr TFailure kSeekOutputNegative{VRL_L("vorlund::CMemoryOutput::Seek"), kFile, 1, kNegative};
constexpr TFailure kWriteNull{VRL_L("vorlund::CMemoryOutput::Write"), kFile, 2, kNoBuffer};
constexpr TFailure kSeekInputNegative{VRL_L("vorlund::CMemoryInput::Seek"), kFile, 3, kNegative};
constexpr TFailure kReadNull{VRL_L("vorlund::CMemoryInput::Read"), kFile, 4, kNoBuffer};
constexpr TFailure kDataIsNull{VRL_L("vorlund::CMemoryInput::SetData"), kFile, 5, VRL_L("data is NULL")};

constexpr std::size_t kMaxBytes = std::numeric_limits<std::size_t>::max() / 2;
constexpr std::size_t kFirstCapacity = 256;

} // namespace

std::int64_t CMemoryOutput::GetLength() {
    NoteSize();
    return static_cast<std::int64_t>(size_);
}

void CMemoryOutput::Seek(std::int64_t position) {
    if (position < 0) Raise<CIOException>(kSeekOutputNegative);
    NoteSize();
    MoveTo(static_cast<std::uint64_t>(position));
}

std::int64_t CMemoryOutput::Tell() {
    return static_cast<std::int64_t>(Used() + gap_);
}

void CMemoryOutput::Write(const void* buffer, std::uint64_t size) {
    // Not for 0 bytes, for which there may be no room at all.
    if (size - 1 < static_cast<std::size_t>(limit_ - next_) && buffer) {
        CopySmall(next_, buffer, static_cast<std::size_t>(size));
        next_ += size;
        return;
    }
    WriteMore(buffer, size);
}

void CMemoryOutput::SetSize(std::uint64_t size) {
    NoteSize();
    const auto position = static_cast<std::uint64_t>(Tell());
    if (size > kMaxBytes) throw std::bad_alloc();
    Grow(static_cast<std::size_t>(size));
    Extend(static_cast<std::size_t>(size));
    size_ = static_cast<std::size_t>(size);
    MoveTo(std::min(position, size));
}

void CMemoryOutput::NoteSize() {
    size_ = std::max(size_, Used());
}

void CMemoryOutput::MoveTo(std::uint64_t position) {
    const std::size_t reached = static_cast<std::size_t>(std::min<std::uint64_t>(position, size_));
    gap_ = position - reached;
    next_ = bytes_.get() + reached;
    limit_ = gap_ > 0 ? next_ : bytes_.get() + capacity_;
}

void CMemoryOutput::WriteMore(const void* buffer, std::uint64_t size) {
    if (size == 0) return;
    if (!buffer) Raise<CNullPtrException>(kWriteNull);
    NoteSize();
    const auto position = static_cast<std::uint64_t>(Tell());
    if (size > kMaxBytes || position > kMaxBytes - size) throw std::bad_alloc();
    // What is written may be bytes of this stream: the former block stays until they are copied.
    const TBytes former = Grow(static_cast<std::size_t>(position + size));
    Extend(static_cast<std::size_t>(position));
    std::memcpy(bytes_.get() + position, buffer, static_cast<std::size_t>(size));
    size_ = std::max(size_, static_cast<std::size_t>(position + size));
    MoveTo(position + size);
}

/// Makes room for so many bytes; returns the former block if there is a new one.
CMemoryOutput::TBytes CMemoryOutput::Grow(std::size_t needed) {
    if (needed <= capacity_) return nullptr;
    const std::size_t capacity = std::max({needed, kFirstCapacity, std::min(2 * capacity_, kMaxBytes)});
    TBytes bytes(static_cast<std::uint8_t*>(std::malloc(capacity)));
    if (!bytes) throw std::bad_alloc();
    if (size_ > 0) std::memcpy(bytes.get(), bytes_.get(), size_);
    bytes_.swap(bytes);
    capacity_ = capacity;
    return bytes;
}

/// Appends zeros up to so many bytes, for which there is room.
void CMemoryOutput::Extend(std::size_t size) {
    if (size <= size_) return;
    std::memset(bytes_.get() + size_, 0, size - size_);
    size_ = size;
}

std::uint32_t CMemoryInput::GetCapabilities() {
    return STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL | STREAM_CAPABILITY_READ;
}

void CMemoryInput::Seek(std::int64_t position) {
    if (position < 0) Raise<CIOException>(kSeekInputNegative);
    const std::uint64_t reached = std::min(static_cast<std::uint64_t>(position), size_);
    next_ = end_ - (size_ - reached);
    gap_ = static_cast<std::uint64_t>(position) - reached;
}

std::int64_t CMemoryInput::Tell() {
    return static_cast<std::int64_t>(size_ - static_cast<std::uint64_t>(end_ - next_) + gap_);
}

std::uint64_t CMemoryInput::Read(void* buffer, std::uint64_t size) {
    if (!buffer) Raise<CNullPtrException>(kReadNull);
    const auto ahead = static_cast<std::uint64_t>(end_ - next_);
    if (size - 1 < ahead) {
        CopySmall(buffer, next_, static_cast<std::size_t>(size));
        next_ += size;
        return size;
    }
    if (size == 0 || ahead == 0) return 0;
    std::memcpy(buffer, next_, static_cast<std::size_t>(ahead));
    next_ = end_;
    return ahead;
}

void CMemoryInput::Skip(std::uint64_t count) {
    next_ += std::min(count, static_cast<std::uint64_t>(end_ - next_));
}

CLoan CMemoryInput::Lend(std::uint64_t size, std::uint64_t) {
    const auto* const bytes = next_;
    const std::uint64_t count = std::min(size, static_cast<std::uint64_t>(end_ - next_));
    next_ += count;
    return {bytes, count};
}

void CMemoryInput::SetData(const void* data, std::uint64_t size) {
    if (!data && size > 0) Raise<CNullPtrException>(kDataIsNull);
    next_ = static_cast<const std::uint8_t*>(data);
    end_ = next_ + size;
    size_ = size;
    gap_ = 0;
}

IMemoryOutputStream* CreateMemoryOutput() {
    return static_cast<CMemoryOutput*>(NewObject<CMemoryOutput>());
}

IMemoryInputStream* CreateMemoryInput(const void* data, std::uint64_t size) {
    auto stream = CRefPtr<CMemoryInput>::Adopt(static_cast<CMemoryInput*>(NewObject<CMemoryInput>()));
    stream->SetData(data, size);
    return stream.Detach();
}

} // namespace vorlund
