/// \file
/// How vectors and matrices are compared.
#pragma once

namespace vorlund {

/// Whether `a` lies within 1e-7 of `b`, bounds included; false for a NaN.
inline bool IsWithinTolerance(float a, float b) {
    constexpr double kTolerance = 1e-7f;
    const double center = b;
    return a >= center - kTolerance && a <= center + kTolerance;
}

} // namespace vorlund
