/// \file
/// A row of a matrix as four doubles in one AVX register; see Row_scalar.h for what its functions do. The
/// product of two floats is exact in a double, so a fused addition gives the same bits as a separate one.
#pragma once

#include "vorlund/math/Adjugate_sse2.h"

#include <immintrin.h>

namespace vorlund {
namespace {

class CRowAvx2 {
public:
    explicit CRowAvx2(__m256d lanes) : lanes_(lanes) {}

    static CRowAvx2 Load(const float* row) { return CRowAvx2(_mm256_cvtps_pd(_mm_loadu_ps(row))); }

    template <int I0, int I1, int I2, int I3> CRowAvx2 Shuffle() const {
        return CRowAvx2(_mm256_permute4x64_pd(lanes_, I0 | I1 << 2 | I2 << 4 | I3 << 6));
    }

    void Store(float* row) const { _mm_storeu_ps(row, _mm256_cvtpd_ps(lanes_)); }
    CRowAvx2 Round() const { return CRowAvx2(_mm256_cvtps_pd(_mm256_cvtpd_ps(lanes_))); }

    float AlternatingSum() const {
        const __m128d low = _mm256_castpd256_pd128(lanes_), high = _mm256_extractf128_pd(lanes_, 1);
        const __m128d three = _mm_add_sd(_mm_sub_sd(low, _mm_unpackhi_pd(low, low)), high);
        return static_cast<float>(_mm_cvtsd_f64(_mm_sub_sd(three, _mm_unpackhi_pd(high, high))));
    }

    static void DivideAdjugate(const float* minors, float determinant, float* inverse) {
        DivideAdjugateSse2(minors, determinant, inverse);
    }

    CRowAvx2 operator*(const CRowAvx2& b) const { return CRowAvx2(_mm256_mul_pd(lanes_, b.lanes_)); }
    CRowAvx2 Plus(const CRowAvx2& a, const CRowAvx2& b) const {
        return CRowAvx2(_mm256_fmadd_pd(a.lanes_, b.lanes_, lanes_));
    }
    CRowAvx2 Minus(const CRowAvx2& a, const CRowAvx2& b) const {
        return CRowAvx2(_mm256_fnmadd_pd(a.lanes_, b.lanes_, lanes_));
    }

private:
    __m256d lanes_;
};

} // namespace
} // namespace vorlund
