// A block of bytes on the heap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

namespace vorlund {

/// Owns uninitialised bytes, or none. Nothing here raises: without the memory the block stays as it was.
class CByteBlock {
public:
    /// The most bytes of a block; more are refused as if there were no memory for them.
    static constexpr std::uint64_t kMaxSize =
        PTRDIFF_MAX < UINT32_MAX ? static_cast<std::uint64_t>(PTRDIFF_MAX) : UINT32_MAX;

    CByteBlock() = default;
    CByteBlock(CByteBlock&& other) noexcept
        : bytes_(std::move(other.bytes_)), capacity_(std::exchange(other.capacity_, 0)) {}
    CByteBlock& operator=(CByteBlock&& other) noexcept {
        bytes_ = std::move(other.bytes_);
        capacity_ = std::exchange(other.capacity_, 0);
        return *this;
    }

    /// Replaces the bytes by `size` others; 0 only frees them. False when there is no memory.
    bool Allocate(std::uint64_t size);

    /// Makes room for `needed` bytes, of which the first `used` are kept; at least doubles the block, so that
    /// bytes are copied a constant number of times on average. Returns false when there is no memory.
    /// \param former  takes over the block that was replaced, because the caller's data may be part of it
    bool Grow(std::uint64_t used, std::uint64_t needed, CByteBlock& former);

    /// Gives back the memory behind the first `used` bytes where that is much, and all of it when `used` is
    /// 0. Copies into a smaller block, so without memory for that the block stays as it was.
    void Trim(std::uint64_t used);

    /// Null when there are no bytes.
    std::byte* Get() const { return bytes_.get(); }
    std::uint64_t GetCapacity() const { return capacity_; }

private:
    std::unique_ptr<std::byte[]> bytes_;
    std::uint64_t capacity_ = 0;
};

} // namespace vorlund
