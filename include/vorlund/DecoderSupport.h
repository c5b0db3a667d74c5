/// \file
/// What decoders need to read records out of a stream: whole records, and integers that are stored with the
/// low byte first. Header-only, for the library's own decoders and for those of plug-ins.
#pragma once

#include <vorlund/Stream.h>

#include <cstdint>

namespace vorlund {

/// Reads exactly `size` bytes into `buffer`, by as many reads as it takes: a stream may deliver less than it
/// was asked for before its end, and only 0 means the end.
///
/// \param stream  is read from where it is
/// \param buffer  room for `size` bytes; null only with a size of 0
/// \param size    in bytes
/// \return false when the stream ends before, or claims more than it was asked for; the stream is then
///         behind what it delivered, and only the bytes before that are valid
///
/// Raises what the stream raises. One thread uses a stream at a time.
inline bool ReadWhole(IInputStream& stream, void* buffer, std::uint64_t size) {
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    std::uint64_t filled = 0;
    while (filled < size) {
        const std::uint64_t count = stream.Read(bytes + filled, size - filled);
        if (count == 0) return false;
        filled += count;
    }
    return filled == size;
}

/// The unsigned 16-bit integer in `bytes[0]` (low) and `bytes[1]`, at any alignment and on any system.
constexpr std::uint16_t LoadLittleEndian16(const std::uint8_t* bytes) {
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

/// The unsigned 32-bit integer in `bytes[0]` (low) to `bytes[3]`, at any alignment and on any system.
constexpr std::uint32_t LoadLittleEndian32(const std::uint8_t* bytes) {
    return LoadLittleEndian16(bytes) | static_cast<std::uint32_t>(LoadLittleEndian16(bytes + 2)) << 16;
}

} // namespace vorlund
