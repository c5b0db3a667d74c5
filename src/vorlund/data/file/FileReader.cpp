#include "vorlund/data/file/FileReader.h"

#include "vorlund/data/file/FileSystem.h"

#include <limits>

namespace vorlund {
namespace {

/// A larger window does not read faster; this much stays in the second-level cache between the system's
/// copy and ours.
constexpr std::uint32_t kMaxWindow = 64 * 1024;

/// The first filling after an opening or a far seek: enough for any header, and a fraction of the price of a
/// full window for a reader that looks here and there. Each further filling asks for twice as much.
constexpr std::uint32_t kFirstStride = 4 * 1024;

/// A single request to the system. Large enough for full speed, small enough for every system's limits.
constexpr std::uint32_t kMaxRequest = 16 * 1024 * 1024;

} // namespace

bool CFileReader::Open(const wchar* path) {
    readError_ = 0;
    descriptor_ = filesystem::OpenInput(path, length_);
    if (!IsOpen()) return false;
    capacity_ = static_cast<std::uint32_t>(std::clamp<std::int64_t>(length_, kFirstStride, kMaxWindow));
    EmptyWindow(0);
    return true;
}

void CFileReader::Close() {
    if (IsOpen()) filesystem::CloseInput(descriptor_);
    descriptor_ = -1;
    length_ = 0;
    buffer_.reset();
    EmptyWindow(0);
}

bool CFileReader::Seek(std::int64_t position) {
    if (position < 0) return false;
    const std::int64_t windowSize = end_ - buffer_.get();
    if (position <= endPosition_ && position >= endPosition_ - windowSize) {
        next_ = end_ - (endPosition_ - position);
    } else {
        EmptyWindow(position);
    }
    return true;
}

std::uint32_t CFileReader::ReadBeyondWindow(void* destination, std::uint32_t size) {
    auto* to = static_cast<unsigned char*>(destination);
    std::uint32_t missing = size;
    while (missing != 0) {
        const std::uint32_t ready = std::min(missing, GetAvailable());
        if (ready != 0) {
            std::memcpy(to, next_, ready);
            next_ += ready;
            to += ready;
            missing -= ready;
        } else if (missing >= capacity_) {
            const std::uint32_t count = ReadDirectly(to, missing);
            if (count == 0) break;
            to += count;
            missing -= count;
        } else if (FillWindow() == 0) {
            break;
        }
    }
    return size - missing;
}

const unsigned char* CFileReader::Lend(std::uint64_t size, std::uint64_t grain, std::uint32_t& count) {
    if (GetAvailable() == 0 && FillWindow() == 0) return buffer_.get();
    count = GetAvailable();
    count =
        count >= size ? static_cast<std::uint32_t>(size) : count - static_cast<std::uint32_t>(count % grain);
    if (count == 0) return nullptr;
    const unsigned char* const bytes = next_;
    next_ += count;
    return bytes;
}

/// Reads straight into `destination`: the buffer has nothing left, and a copy through it would cost time.
std::uint32_t CFileReader::ReadDirectly(unsigned char* destination, std::uint32_t size) {
    const std::uint32_t count = ReadAtEnd(destination, std::min(size, kMaxRequest));
    stride_ = capacity_;
    next_ = end_ = buffer_.get();
    endPosition_ += count;
    return count;
}

std::uint32_t CFileReader::FillWindow() {
    // Not zeroed: only what was read is ever delivered.
    if (!buffer_) {
        buffer_.reset(new unsigned char[capacity_]);
        next_ = end_ = buffer_.get();
    }
    const std::uint32_t count = ReadAtEnd(buffer_.get(), stride_);
    // The end of the file overwrites nothing: a parser that looks there comes back to a window as it was.
    if (count == 0) return 0;
    stride_ = std::min(2 * stride_, capacity_);
    next_ = buffer_.get();
    end_ = next_ + count;
    endPosition_ += count;
    return count;
}

/// Asks the system for what follows the window. 0 at the end of the file, and when the system refuses.
std::uint32_t CFileReader::ReadAtEnd(unsigned char* destination, std::uint32_t size) {
    // No file is so long, but the system would call this an error.
    if (endPosition_ > std::numeric_limits<std::int64_t>::max() - size) return 0;
    // The first error is the one that explains those that follow.
    return filesystem::ReadAt(descriptor_, endPosition_, destination, size,
                              readError_ == 0 ? &readError_ : nullptr);
}

void CFileReader::EmptyWindow(std::int64_t position) {
    stride_ = kFirstStride;
    next_ = end_ = buffer_.get();
    endPosition_ = position;
}

} // namespace vorlund
