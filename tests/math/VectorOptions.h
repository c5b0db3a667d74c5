/// \file
/// The vector arithmetic, compiled once more for each set of compiler options: what is evaluated.
#pragma once

namespace vorlund::test {

/// One case: two vectors, a number, and a matrix.
struct TVectorCase {
    float a[3];
    float b[3];
    float k;
    double d;
    float m[16];
};

constexpr int kVectorResults = 40;
using TVectorResults = float[kVectorResults];

/// Of many cases at once, so that a compiler may work on several.
using TEvaluateVectors = void(const TVectorCase* cases, TVectorResults* results, int count);

} // namespace vorlund::test
