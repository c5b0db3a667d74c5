// Frames on their way from one thread to another.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace vorlund {

/// A ring for one thread that writes and one that reads, without a lock. Each side sees the other's progress
/// at once, and may count on what it has seen. Numbers count frames.
class CFrameRing {
public:
    /// Raises `std::bad_alloc`.
    CFrameRing(std::size_t frameSize, std::size_t capacity)
        : frameSize_(frameSize), capacity_(capacity),
          bytes_(std::make_unique<std::byte[]>(frameSize * capacity)) {}

    std::size_t GetFrameSize() const { return frameSize_; }
    std::size_t GetCapacity() const { return capacity_; }
    std::size_t GetReadable() const {
        const std::uint64_t read = read_.load(std::memory_order_acquire);
        return static_cast<std::size_t>(written_.load(std::memory_order_acquire) - read);
    }
    std::size_t GetRoom() const { return capacity_ - GetReadable(); }
    /// All that were ever written, and all that were ever read or cleared.
    std::uint64_t GetWritten() const { return written_.load(std::memory_order_acquire); }
    std::uint64_t GetRead() const { return read_.load(std::memory_order_acquire); }

    /// Where the writer may put frames next: at most `frames`, and no more than lie in one piece.
    std::span<std::byte> BeginWrite(std::size_t frames) {
        const std::size_t count = std::min({frames, GetRoom(), capacity_ - writeAt_});
        return {bytes_.get() + writeAt_ * frameSize_, count * frameSize_};
    }
    void EndWrite(std::size_t frames) {
        writeAt_ = (writeAt_ + frames) % capacity_;
        written_.store(written_.load(std::memory_order_relaxed) + frames, std::memory_order_release);
    }
    /// The same for the reader.
    std::span<const std::byte> BeginRead(std::size_t frames) const {
        const std::size_t count = std::min({frames, GetReadable(), capacity_ - readAt_});
        return {bytes_.get() + readAt_ * frameSize_, count * frameSize_};
    }
    void EndRead(std::size_t frames) {
        readAt_ = (readAt_ + frames) % capacity_;
        read_.store(read_.load(std::memory_order_relaxed) + frames, std::memory_order_release);
    }

    /// Reads all that is there and drops it; by the reader, or while nobody reads.
    void Clear() { EndRead(GetReadable()); }

private:
    const std::size_t frameSize_;
    const std::size_t capacity_;
    const std::unique_ptr<std::byte[]> bytes_;
    std::size_t writeAt_ = 0;
    std::size_t readAt_ = 0;
    std::atomic<std::uint64_t> written_{0};
    std::atomic<std::uint64_t> read_{0};
    // Clang's answer for 32 bits does not know that the class is aligned.
    static_assert(std::atomic<std::uint64_t>::is_always_lock_free ||
                  alignof(std::atomic<std::uint64_t>) == 8);
};

} // namespace vorlund
