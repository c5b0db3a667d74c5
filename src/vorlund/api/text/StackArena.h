/// \file
/// Memory for texts that live as long as one function.
#pragma once

#include <cstddef>
#include <memory_resource>
#include <string>

namespace vorlund {

/// Room on the stack for the strings of one function, enough for a debug message in UTF-8: those are cut at
/// 1023 units. Only longer texts take memory from the heap, so that running out of it can be reported.
class CStackArena {
public:
    std::pmr::memory_resource* Get() { return &resource_; }

private:
    char storage_[8192];
    std::pmr::monotonic_buffer_resource resource_{storage_, sizeof(storage_)};
};

/// An empty string in the arena, reserved for `size` bytes.
inline std::pmr::string ReserveString(CStackArena& arena, std::size_t size) {
    std::pmr::string text(arena.Get());
    text.reserve(size);
    return text;
}

} // namespace vorlund
