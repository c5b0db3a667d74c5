/// \file
/// A row of a matrix as four doubles: two SSE2 registers, or a plain array for processors without them. Each
/// lane computes what plain double arithmetic does, so that both forms give the same bits. Row_avx2.h is the
/// third.
#pragma once

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vorlund {
namespace {

#if defined(__SSE2__)

class CRow {
public:
    CRow(__m128d low, __m128d high) : low_(low), high_(high) {}

    /// Four floats from an address of any alignment.
    static CRow Load(const float* row) { return Widen(_mm_loadu_ps(row)); }

    /// Lanes I0 to I3 in lanes 0 to 3.
    template <int I0, int I1, int I2, int I3> CRow Shuffle() const {
        return {Pick<I0, I1>(low_, high_), Pick<I2, I3>(low_, high_)};
    }

    void Store(float* row) const {
        _mm_storeu_ps(row, _mm_movelh_ps(_mm_cvtpd_ps(low_), _mm_cvtpd_ps(high_)));
    }
    /// Each lane as its nearest float.
    CRow Round() const { return {_mm_cvtps_pd(_mm_cvtpd_ps(low_)), _mm_cvtps_pd(_mm_cvtpd_ps(high_))}; }

    /// Lane 0 - lane 1 + lane 2 - lane 3, from left to right, rounded.
    float AlternatingSum() const {
        const __m128d three = _mm_add_sd(_mm_sub_sd(low_, _mm_unpackhi_pd(low_, low_)), high_);
        return static_cast<float>(_mm_cvtsd_f64(_mm_sub_sd(three, _mm_unpackhi_pd(high_, high_))));
    }

    CRow operator*(const CRow& b) const { return {_mm_mul_pd(low_, b.low_), _mm_mul_pd(high_, b.high_)}; }
    /// This plus, or minus, a product of two rows of floats.
    CRow Plus(const CRow& a, const CRow& b) const {
        const CRow product = a * b;
        return {_mm_add_pd(low_, product.low_), _mm_add_pd(high_, product.high_)};
    }
    CRow Minus(const CRow& a, const CRow& b) const {
        const CRow product = a * b;
        return {_mm_sub_pd(low_, product.low_), _mm_sub_pd(high_, product.high_)};
    }

private:
    static CRow Widen(__m128 row) { return {_mm_cvtps_pd(row), _mm_cvtps_pd(_mm_movehl_ps(row, row))}; }

    template <int I, int J> static __m128d Pick(__m128d low, __m128d high) {
        return _mm_shuffle_pd(I < 2 ? low : high, J < 2 ? low : high, (I & 1) | (J & 1) << 1);
    }

    __m128d low_;
    __m128d high_;
};

#else

class CRow {
public:
    CRow(double a, double b, double c, double d) : lanes_{a, b, c, d} {}

    static CRow Load(const float* row) { return {row[0], row[1], row[2], row[3]}; }

    template <int I0, int I1, int I2, int I3> CRow Shuffle() const {
        return {lanes_[I0], lanes_[I1], lanes_[I2], lanes_[I3]};
    }

    void Store(float* row) const {
        for (int i = 0; i < 4; ++i) row[i] = static_cast<float>(lanes_[i]);
    }
    CRow Round() const {
        float row[4];
        Store(row);
        return Load(row);
    }

    float AlternatingSum() const { return static_cast<float>(lanes_[0] - lanes_[1] + lanes_[2] - lanes_[3]); }

    CRow operator*(const CRow& b) const {
        return {lanes_[0] * b.lanes_[0], lanes_[1] * b.lanes_[1], lanes_[2] * b.lanes_[2],
                lanes_[3] * b.lanes_[3]};
    }
    CRow Plus(const CRow& a, const CRow& b) const {
        const CRow p = a * b;
        return {lanes_[0] + p.lanes_[0], lanes_[1] + p.lanes_[1], lanes_[2] + p.lanes_[2],
                lanes_[3] + p.lanes_[3]};
    }
    CRow Minus(const CRow& a, const CRow& b) const {
        const CRow p = a * b;
        return {lanes_[0] - p.lanes_[0], lanes_[1] - p.lanes_[1], lanes_[2] - p.lanes_[2],
                lanes_[3] - p.lanes_[3]};
    }

private:
    double lanes_[4];
};

#endif

} // namespace
} // namespace vorlund
