// Time limits, from seconds to the system's milliseconds.
#pragma once

#include "vorlund/api/values/Arithmetic.h"

#include <cstdint>

namespace vorlund {

/// The low 32 bits of `seconds` times 1000.0, truncated toward zero to 64 bits. Kept for existing callers:
/// nothing is clamped, so -0.001 s is no limit at all. A product that does not fit in 64 bits gives 0.
constexpr std::uint32_t MillisecondsOf(double seconds) {
    return static_cast<std::uint32_t>(TruncateToInt64(seconds * 1000.0));
}

} // namespace vorlund
