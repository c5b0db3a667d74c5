// Bytes of text as UTF-16 units.
#pragma once

#include "vorlund/api/text/TextKernels.h"
#include "vorlund/serial/LineKernels.h"

#include <vorlund/CharFormat.h>
#include <vorlund/Platform.h>

#include <algorithm>
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

/// The same as a power of two.
constexpr int UnitShift(TCharFormat format) {
    return format == CHAR_FORMAT_8BIT ? 0 : 1;
}

/// The place of `unit`, a value below 128, among `count` units of a stream, which begin where any type may;
/// `count` when there is none.
inline std::size_t FindStreamUnit(const std::uint8_t* bytes, std::size_t count, char unit,
                                  TCharFormat format) {
    if (format == CHAR_FORMAT_8BIT) {
        const void* const place = std::memchr(bytes, unit, count);
        return place ? static_cast<std::size_t>(static_cast<const std::uint8_t*>(place) - bytes) : count;
    }
    const auto* const units = static_cast<const wchar*>(static_cast<const void*>(bytes));
    const std::size_t place =
        count < kLongLine ? FindFirstUnit(units, count, static_cast<wchar>(unit))
                          : lineKernels->routines.findFirstUnit(units, count, static_cast<wchar>(unit));
    return std::min(place, count);
}

/// Turns `count` units of a stream into UTF-16; true when `unit`, which is below 128, is among them.
inline bool CopyUnitsAndLook(wchar* units, const std::uint8_t* bytes, std::size_t count, TCharFormat format,
                             wchar unit) {
    const bool isLong = count >= kLongLine;
    if (format == CHAR_FORMAT_8BIT)
        return (isLong ? lineKernels->routines.widenBytesAndLook : WidenBytesAndLook)(units, bytes, count,
                                                                                      unit);
    const auto* const source = static_cast<const wchar*>(static_cast<const void*>(bytes));
    return (isLong ? lineKernels->routines.copyTextAndLook : CopyTextAndLook)(units, source, count, unit);
}

} // namespace vorlund
