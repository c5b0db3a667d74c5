// Seconds as the system counts them.
#pragma once

#include "vorlund/api/values/Arithmetic.h"

#include <cstdint>

namespace vorlund {

/// The low 32 bits of `seconds` times 1000.0, truncated toward zero to 64 bits. Deliberately nothing is
/// clamped; a product that does not fit gives 0.
constexpr std::uint32_t MillisecondsOf(double seconds) {
    return static_cast<std::uint32_t>(TruncateToInt64(seconds * 1000.0));
}

} // namespace vorlund
