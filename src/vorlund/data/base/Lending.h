// Bytes that a stream hands out where they are, so that a filter above it need not copy them first. Only
// between streams of the library: whoever is connected to another one reads as ever.
#pragma once

#include <vorlund/Stream.h>

#include <cstddef>
#include <cstdint>
#include <utility>

namespace vorlund {

/// Bytes of a stream. They stay as they are until the loan ends or the stream is used again.
class CLoan {
public:
    /// What has to be done at the end.
    using TGiveBack = void (*)(void* owner);

    /// Nothing is lent, and the stream has not moved: read.
    CLoan() = default;
    CLoan(const void* bytes, std::uint64_t count, TGiveBack giveBack = nullptr, void* owner = nullptr)
        : bytes_(static_cast<const std::byte*>(bytes)), count_(count), isLent_(true), giveBack_(giveBack),
          owner_(owner) {}
    CLoan(CLoan&& other) noexcept
        : bytes_(other.bytes_), count_(other.count_), isLent_(other.isLent_),
          giveBack_(std::exchange(other.giveBack_, nullptr)), owner_(other.owner_) {}
    CLoan& operator=(CLoan&&) = delete;
    ~CLoan() {
        if (giveBack_) giveBack_(owner_);
    }

    bool IsLent() const { return isLent_; }
    const std::byte* GetBytes() const { return bytes_; }
    /// What a `Read` would have returned, or less as `ILendingInput` says.
    std::uint64_t GetCount() const { return count_; }

private:
    const std::byte* bytes_ = nullptr;
    std::uint64_t count_ = 0;
    bool isLent_ = false;
    TGiveBack giveBack_ = nullptr;
    void* owner_ = nullptr;
};

/// A second base of input streams that lend.
class ILendingInput {
public:
    /// Instead of `Read`: lends what comes next, at most `size` bytes, and moves on behind it. Less than
    /// `size` is the last there is, or a multiple of `grain`, which is at most `size`; 0 is the end. Raises
    /// what `Read` raises.
    virtual CLoan Lend(std::uint64_t size, std::uint64_t grain) = 0;

protected:
    ~ILendingInput() = default;
};

/// The same stream if it lends, else null. Takes a while: ask when it is connected.
inline ILendingInput* AsLending(IInputStream* stream) {
    return dynamic_cast<ILendingInput*>(stream);
}

} // namespace vorlund
