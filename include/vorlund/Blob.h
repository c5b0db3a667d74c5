/// \file
/// `CBlob`, bytes as a plain value.
#pragma once

#include <vorlund/Platform.h>

#include <cstdint>

namespace vorlund {

/// A block of bytes that is copied like a number: for data that need neither a format nor a lock nor
/// references. One thread at a time.
///
/// Holds up to 2^32-1 bytes (on 32-bit systems less than 2^31). Every operation that allocates raises
/// `COutOfMemoryException` "malloc failed" when there is not enough memory; the blob is then as it was.
class VRL_API CBlob {
public:
    /// Empty.
    CBlob() = default;
    /// A copy of `size` bytes of `data`. Raises `CNullPtrException` "data is NULL" unless the size is 0.
    CBlob(const void* data, std::uint64_t size);
    CBlob(const CBlob& other);
    /// Leaves `other` empty.
    CBlob(CBlob&& other) noexcept;
    CBlob& operator=(const CBlob& other);
    CBlob& operator=(CBlob&& other) noexcept;
    ~CBlob();

    /// The bytes, valid until the size changes; null when there are none.
    void* GetData() { return data_; }
    const void* GetData() const { return data_; }
    /// Size in bytes.
    std::uint64_t GetSize() const { return size_; }
    bool IsEmpty() const { return size_ == 0; }

    /// Replaces the bytes by a copy of `size` bytes of `data`, which may be bytes of this blob. Raises
    /// `CNullPtrException` "data is NULL" unless the size is 0.
    void SetData(const void* data, std::uint64_t size);
    /// Cuts the bytes, or appends zeros.
    void SetSize(std::uint64_t size);
    /// Frees the bytes.
    void Clear();

    /// Equal in size and in every byte.
    bool operator==(const CBlob& other) const;

private:
    unsigned char* data_ = nullptr;
    std::uint64_t size_ = 0;
};

} // namespace vorlund
