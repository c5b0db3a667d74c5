// Integers of file formats that store the low byte first.
#pragma once

#include <cstdint>

namespace vorlund {

/// The unsigned 16-bit integer in `bytes[0]` and `bytes[1]`.
constexpr std::uint16_t LoadLittleEndian16(const std::uint8_t* bytes) {
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

/// The unsigned 32-bit integer in `bytes[0]` to `bytes[3]`.
constexpr std::uint32_t LoadLittleEndian32(const std::uint8_t* bytes) {
    return LoadLittleEndian16(bytes) | static_cast<std::uint32_t>(LoadLittleEndian16(bytes + 2)) << 16;
}

} // namespace vorlund
