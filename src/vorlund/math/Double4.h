/// \file
/// Four doubles at a time, for the rows of matrices: two SSE2 registers, or a plain array for processors
/// without them. Each lane computes what plain double arithmetic does, in the order that is written, so that
/// both forms give the same bits.
#pragma once

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vorlund {

#if defined(__SSE2__)

class CDouble4 {
public:
    CDouble4(__m128d low, __m128d high) : low_(low), high_(high) {}

    static CDouble4 Widen(__m128 row) { return {_mm_cvtps_pd(row), _mm_cvtps_pd(_mm_movehl_ps(row, row))}; }
    /// Four floats from an address of any alignment.
    static CDouble4 Load(const float* row) { return Widen(_mm_loadu_ps(row)); }
    static CDouble4 Same(float value) {
        const __m128d pair = _mm_set1_pd(value);
        return {pair, pair};
    }

    /// Lanes I0 to I3 in lanes 0 to 3.
    template <int I0, int I1, int I2, int I3> CDouble4 Shuffle() const {
        return {Pick<I0, I1>(low_, high_), Pick<I2, I3>(low_, high_)};
    }

    __m128 Rounded() const { return _mm_movelh_ps(_mm_cvtpd_ps(low_), _mm_cvtpd_ps(high_)); }
    void Store(float* row) const { _mm_storeu_ps(row, Rounded()); }
    /// Each lane as its nearest float.
    CDouble4 Round() const { return {_mm_cvtps_pd(_mm_cvtpd_ps(low_)), _mm_cvtps_pd(_mm_cvtpd_ps(high_))}; }

    CDouble4 operator+(const CDouble4& b) const {
        return {_mm_add_pd(low_, b.low_), _mm_add_pd(high_, b.high_)};
    }
    CDouble4 operator-(const CDouble4& b) const {
        return {_mm_sub_pd(low_, b.low_), _mm_sub_pd(high_, b.high_)};
    }
    CDouble4 operator*(const CDouble4& b) const {
        return {_mm_mul_pd(low_, b.low_), _mm_mul_pd(high_, b.high_)};
    }

private:
    template <int I, int J> static __m128d Pick(__m128d low, __m128d high) {
        return _mm_shuffle_pd(I < 2 ? low : high, J < 2 ? low : high, (I & 1) | (J & 1) << 1);
    }

    __m128d low_;
    __m128d high_;
};

#else

class CDouble4 {
public:
    CDouble4(double a, double b, double c, double d) : lanes_{a, b, c, d} {}

    static CDouble4 Load(const float* row) { return {row[0], row[1], row[2], row[3]}; }
    static CDouble4 Same(float value) { return {value, value, value, value}; }

    template <int I0, int I1, int I2, int I3> CDouble4 Shuffle() const {
        return {lanes_[I0], lanes_[I1], lanes_[I2], lanes_[I3]};
    }

    void Store(float* row) const {
        for (int i = 0; i < 4; ++i) row[i] = static_cast<float>(lanes_[i]);
    }
    CDouble4 Round() const {
        return {static_cast<float>(lanes_[0]), static_cast<float>(lanes_[1]), static_cast<float>(lanes_[2]),
                static_cast<float>(lanes_[3])};
    }

    CDouble4 operator+(const CDouble4& b) const {
        return {lanes_[0] + b.lanes_[0], lanes_[1] + b.lanes_[1], lanes_[2] + b.lanes_[2],
                lanes_[3] + b.lanes_[3]};
    }
    CDouble4 operator-(const CDouble4& b) const {
        return {lanes_[0] - b.lanes_[0], lanes_[1] - b.lanes_[1], lanes_[2] - b.lanes_[2],
                lanes_[3] - b.lanes_[3]};
    }
    CDouble4 operator*(const CDouble4& b) const {
        return {lanes_[0] * b.lanes_[0], lanes_[1] * b.lanes_[1], lanes_[2] * b.lanes_[2],
                lanes_[3] * b.lanes_[3]};
    }

private:
    double lanes_[4];
};

#endif

} // namespace vorlund
