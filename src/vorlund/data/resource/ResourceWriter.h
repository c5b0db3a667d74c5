// Writing into resources, the library's own and foreign ones.
#pragma once

#include <cstdint>
#include <optional>

namespace vorlund {

class IResource;

/// Stores `size` bytes of `buffer` from `position` on, or at the end without one, under the resource's write
/// lock; the resource grows, and a gap is filled with zeros. `buffer` may point into the resource. Gives the
/// position behind the last byte, or nothing when there is no memory; the resource is then as it was.
std::optional<std::uint64_t> WriteToResource(IResource& resource, std::optional<std::uint64_t> position,
                                             const void* buffer, std::uint64_t size);

} // namespace vorlund
