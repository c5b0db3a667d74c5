// Samples of 24 bits in three bytes, the low byte first.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorlund::pcm {

/// The sample as the upper three bytes of one of 32 bits.
inline std::int32_t LoadPacked24(const std::byte* from) {
    return static_cast<std::int32_t>(std::to_integer<std::uint32_t>(from[0]) << 8 |
                                     std::to_integer<std::uint32_t>(from[1]) << 16 |
                                     std::to_integer<std::uint32_t>(from[2]) << 24);
}

/// Stores the low 24 bits.
inline void StorePacked24(std::byte* to, std::uint32_t bits) {
    to[0] = static_cast<std::byte>(bits & 0xFF);
    to[1] = static_cast<std::byte>(bits >> 8 & 0xFF);
    to[2] = static_cast<std::byte>(bits >> 16 & 0xFF);
}

} // namespace vorlund::pcm
