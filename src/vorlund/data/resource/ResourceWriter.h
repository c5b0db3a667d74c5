// Writing into resources, the library's own and foreign ones.
#pragma once

#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>

#include <cstdint>
#include <optional>

namespace vorlund {

class CResource;

/// Holds a reference to a resource, or nothing, and writes into it.
class CResourceWriter {
public:
    /// Releases the former resource and holds `resource` with a reference of its own; null for none.
    void Bind(IResource* resource);

    /// Stores `size` bytes of `buffer` from `position` on, or at the end without one, under the resource's
    /// write lock; the resource grows, and a gap is filled with zeros. `buffer` may point into the resource.
    /// Gives the position behind the last byte, or nothing when there is no memory; the resource is then as
    /// it was. Only while there is a resource.
    std::optional<std::uint64_t> Write(std::optional<std::uint64_t> position, const void* buffer,
                                       std::uint64_t size);

    IResource* operator->() const { return resource_.Get(); }
    explicit operator bool() const { return static_cast<bool>(resource_); }

private:
    CRefPtr<IResource> resource_;
    /// The resource as the library's own class, which grows in place, or null.
    CResource* own_ = nullptr;
};

} // namespace vorlund
