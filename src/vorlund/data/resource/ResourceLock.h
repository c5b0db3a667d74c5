// The lock of a resource, held for the length of a block.
#pragma once

#include <vorlund/Resource.h>

#include <cstddef>

namespace vorlund {

/// Holds the lock of any resource from construction to destruction.
class CResourceLock {
public:
    CResourceLock(IResource& resource, TLockMode mode)
        : resource_(resource), data_(static_cast<std::byte*>(resource.Lock(mode))) {}
    CResourceLock(const CResourceLock&) = delete;
    CResourceLock& operator=(const CResourceLock&) = delete;
    ~CResourceLock() { resource_.Unlock(); }

    /// The data as the lock gave them, or null.
    std::byte* GetData() const { return data_; }
    /// The number of bytes there: a resource that got no memory has a size, but no data.
    std::uint64_t GetSize() const { return data_ ? resource_.GetSize() : 0; }

private:
    IResource& resource_;
    std::byte* data_;
};

} // namespace vorlund
