/// \file
/// Points times a matrix, four at a time, with the sums of `CVector::operator*` in lanes of AVX registers;
/// see Row_avx2.h for why fused additions give the same bits.
#pragma once

#include "vorlund/math/MatrixLoops.h"

#include <immintrin.h>

namespace vorlund {
namespace {

/// One coordinate of four points.
struct TCoordinatesAvx2 {
    __m256d x, y, z;
};

/// The first elements of a column, each in all lanes.
class CColumnAvx2 {
public:
    explicit CColumnAvx2(const float* e)
        : x_(Spread(e[0])), y_(Spread(e[4])), z_(Spread(e[8])), last_(Spread(e[12])) {}

    __m128 Times(const TCoordinatesAvx2& points) const {
        __m256d sum = _mm256_mul_pd(points.x, x_);
        sum = _mm256_fmadd_pd(points.y, y_, sum);
        sum = _mm256_fmadd_pd(points.z, z_, sum);
        return _mm256_cvtpd_ps(_mm256_add_pd(sum, last_));
    }

private:
    static __m256d Spread(float element) { return _mm256_set1_pd(static_cast<double>(element)); }

    const __m256d x_, y_, z_, last_;
};

void TransformEachAvx2(const CMatrix& matrix, const CVector* points, CVector* results, std::size_t count) {
    static_assert(sizeof(CVector) == 3 * sizeof(float));
    const float* const e = CMatrixAccess::Elements(matrix);
    const CColumnAvx2 first(e), second(e + 1), third(e + 2);
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const float* const from = &points[i].x;
        // x0 y0 z0 x1, y1 z1 x2 y2, z2 x3 y3 z3
        const __m128 a = _mm_loadu_ps(from), b = _mm_loadu_ps(from + 4), c = _mm_loadu_ps(from + 8);
        const __m128 x2y2x3y3 = _mm_shuffle_ps(b, c, _MM_SHUFFLE(2, 1, 3, 2));
        const __m128 y0z0y1z1 = _mm_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 2, 1));
        const TCoordinatesAvx2 four{
            _mm256_cvtps_pd(_mm_shuffle_ps(a, x2y2x3y3, _MM_SHUFFLE(2, 0, 3, 0))),
            _mm256_cvtps_pd(_mm_shuffle_ps(y0z0y1z1, x2y2x3y3, _MM_SHUFFLE(3, 1, 2, 0))),
            _mm256_cvtps_pd(_mm_shuffle_ps(y0z0y1z1, c, _MM_SHUFFLE(3, 0, 3, 1)))};
        const __m128 x = first.Times(four), y = second.Times(four), z = third.Times(four);
        // x0 x2 y0 y2, y1 y3 z1 z3, z0 z2 x1 x3
        const __m128 xy = _mm_shuffle_ps(x, y, _MM_SHUFFLE(2, 0, 2, 0));
        const __m128 yz = _mm_shuffle_ps(y, z, _MM_SHUFFLE(3, 1, 3, 1));
        const __m128 zx = _mm_shuffle_ps(z, x, _MM_SHUFFLE(3, 1, 2, 0));
        float* const to = &results[i].x;
        _mm_storeu_ps(to, _mm_shuffle_ps(xy, zx, _MM_SHUFFLE(2, 0, 2, 0)));
        _mm_storeu_ps(to + 4, _mm_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0)));
        _mm_storeu_ps(to + 8, _mm_shuffle_ps(zx, yz, _MM_SHUFFLE(3, 1, 3, 1)));
    }
    TransformEach(matrix, points + i, results + i, count - i);
}

} // namespace
} // namespace vorlund
