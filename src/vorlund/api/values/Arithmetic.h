// Arithmetic whose result is the same on every target, for every input.
#pragma once

#include <cstdint>
#include <limits>

namespace vorlund {

/// `value` truncated toward zero; -2^63, as the conversion instructions of x86 give, when that does not fit
/// and when `value` is not a number.
constexpr std::int64_t TruncateToInt64(double value) {
    // Both limits are exact in double precision; a NaN fails the comparisons.
    if (value >= -0x1p63 && value < 0x1p63) return static_cast<std::int64_t>(value);
    return std::numeric_limits<std::int64_t>::min();
}

/// The same in 32 bits: -2^31 where the truncated value does not fit.
constexpr std::int32_t TruncateToInt32(double value) {
    if (value > -0x1p31 - 1 && value < 0x1p31) return static_cast<std::int32_t>(value);
    return std::numeric_limits<std::int32_t>::min();
}

/// The product modulo 2^64.
constexpr std::int64_t MultiplyWrapping(std::int64_t left, std::uint32_t right) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(left) * right);
}

} // namespace vorlund
