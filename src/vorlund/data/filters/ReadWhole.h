// Records of a fixed size out of a stream.
#pragma once

#include <vorlund/Stream.h>

#include <cstdint>

namespace vorlund {

/// Reads `size` bytes, by as many reads as it takes: a stream may deliver less than it was asked for before
/// its end, and only 0 means the end. False when the stream ends before, or claims more than it was asked
/// for.
inline bool ReadWhole(IInputStream& stream, std::uint8_t* buffer, std::uint64_t size) {
    std::uint64_t filled = 0;
    while (filled < size) {
        const std::uint64_t count = stream.Read(buffer + filled, size - filled);
        if (count == 0) return false;
        filled += count;
    }
    return filled == size;
}

} // namespace vorlund
