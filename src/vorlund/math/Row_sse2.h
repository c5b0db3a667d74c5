/// \file
/// A row of a matrix as four doubles in two SSE2 registers; see Row_scalar.h for what its functions do.
#pragma once

#include "vorlund/math/Adjugate_sse2.h"

#include <emmintrin.h>

namespace vorlund {
namespace {

class CRowSse2 {
public:
    CRowSse2(__m128d low, __m128d high) : low_(low), high_(high) {}

    static CRowSse2 Load(const float* row) { return Widen(_mm_loadu_ps(row)); }

    template <int I0, int I1, int I2, int I3> CRowSse2 Shuffle() const {
        return {Pick<I0, I1>(low_, high_), Pick<I2, I3>(low_, high_)};
    }

    void Store(float* row) const {
        _mm_storeu_ps(row, _mm_movelh_ps(_mm_cvtpd_ps(low_), _mm_cvtpd_ps(high_)));
    }
    CRowSse2 Round() const { return {_mm_cvtps_pd(_mm_cvtpd_ps(low_)), _mm_cvtps_pd(_mm_cvtpd_ps(high_))}; }

    float AlternatingSum() const {
        const __m128d three = _mm_add_sd(_mm_sub_sd(low_, _mm_unpackhi_pd(low_, low_)), high_);
        return static_cast<float>(_mm_cvtsd_f64(_mm_sub_sd(three, _mm_unpackhi_pd(high_, high_))));
    }

    static void DivideAdjugate(const float* minors, float determinant, float* inverse) {
        DivideAdjugateSse2(minors, determinant, inverse);
    }

    CRowSse2 operator*(const CRowSse2& b) const {
        return {_mm_mul_pd(low_, b.low_), _mm_mul_pd(high_, b.high_)};
    }
    CRowSse2 Plus(const CRowSse2& a, const CRowSse2& b) const {
        const CRowSse2 product = a * b;
        return {_mm_add_pd(low_, product.low_), _mm_add_pd(high_, product.high_)};
    }
    CRowSse2 Minus(const CRowSse2& a, const CRowSse2& b) const {
        const CRowSse2 product = a * b;
        return {_mm_sub_pd(low_, product.low_), _mm_sub_pd(high_, product.high_)};
    }

private:
    static CRowSse2 Widen(__m128 row) { return {_mm_cvtps_pd(row), _mm_cvtps_pd(_mm_movehl_ps(row, row))}; }

    template <int I, int J> static __m128d Pick(__m128d low, __m128d high) {
        return _mm_shuffle_pd(I < 2 ? low : high, J < 2 ? low : high, (I & 1) | (J & 1) << 1);
    }

    __m128d low_;
    __m128d high_;
};

} // namespace
} // namespace vorlund
