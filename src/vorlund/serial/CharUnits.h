// Bytes of text as UTF-16 units.
#pragma once

#include <vorlund/CharFormat.h>
#include <vorlund/Platform.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vorlund {

static_assert(std::endian::native == std::endian::little);

/// Bytes of a unit in a stream.
constexpr std::size_t UnitSize(TCharFormat format) {
    return format == CHAR_FORMAT_8BIT ? 1 : sizeof(wchar);
}

/// Appends the whole units in `size` bytes.
inline void AppendUnits(wstring& units, const std::uint8_t* bytes, std::size_t size, TCharFormat format) {
    const std::size_t count = size / UnitSize(format);
    const std::size_t start = units.size();
    units.resize(start + count);
    wchar* const to = units.data() + start;
    if (format == CHAR_FORMAT_8BIT) {
        for (std::size_t i = 0; i < count; ++i) to[i] = bytes[i];
    } else {
        std::memcpy(to, bytes, count * sizeof(wchar));
    }
}

} // namespace vorlund
