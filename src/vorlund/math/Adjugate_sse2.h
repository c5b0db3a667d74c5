/// \file
/// The last step of an inversion in SSE2 registers, which the rows for newer processors take, too: it works
/// on floats, four at a time.
#pragma once

#include <xmmintrin.h>

namespace vorlund {
namespace {

/// `DivideAdjugate` of the rows.
inline void DivideAdjugateSse2(const float* minors, float determinant, float* inverse) {
    const __m128 even = _mm_setr_ps(0.0f, -0.0f, 0.0f, -0.0f);
    const __m128 odd = _mm_setr_ps(-0.0f, 0.0f, -0.0f, 0.0f);
    const __m128 divisor = _mm_set1_ps(determinant);
    __m128 row0 = _mm_div_ps(_mm_xor_ps(_mm_loadu_ps(minors), even), divisor);
    __m128 row1 = _mm_div_ps(_mm_xor_ps(_mm_loadu_ps(minors + 4), odd), divisor);
    __m128 row2 = _mm_div_ps(_mm_xor_ps(_mm_loadu_ps(minors + 8), even), divisor);
    __m128 row3 = _mm_div_ps(_mm_xor_ps(_mm_loadu_ps(minors + 12), odd), divisor);
    _MM_TRANSPOSE4_PS(row0, row1, row2, row3);
    _mm_storeu_ps(inverse, row0);
    _mm_storeu_ps(inverse + 4, row1);
    _mm_storeu_ps(inverse + 8, row2);
    _mm_storeu_ps(inverse + 12, row3);
}

} // namespace
} // namespace vorlund
