/// \file
/// The loops behind MatrixKernels.h, over either kind of row. Sums are added from left to right, as in the
/// plain loops that tests compare them with.
///
/// Determinants of minors are results of `CMatrix::Determinant` and therefore floats: what is computed here
/// in one go has the roundings of the expansion step by step.
#pragma once

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace vorlund {
namespace {

template <class TRow> void Multiply(const float* a, const float* b, float* product) {
    const TRow b0 = TRow::Load(b), b1 = TRow::Load(b + 4), b2 = TRow::Load(b + 8), b3 = TRow::Load(b + 12);
    for (int row = 0; row < 16; row += 4) {
        const float* const left = a + row;
        (TRow::Repeat(left[0]) * b0)
            .Plus(TRow::Repeat(left[1]), b1)
            .Plus(TRow::Repeat(left[2]), b2)
            .Plus(TRow::Repeat(left[3]), b3)
            .Store(product + row);
    }
}

template <class TRow> void Transform(float x, float y, float z, const float* m, float* result) {
    const TRow turned = (TRow::Repeat(x) * TRow::Load(m))
                            .Plus(TRow::Repeat(y), TRow::Load(m + 4))
                            .Plus(TRow::Repeat(z), TRow::Load(m + 8));
    (turned + TRow::Load(m + 12)).Store(result);
}

/// A row for the minors that lack column 0 to 3, one a lane: their first, second and third elements.
template <class TRow> struct TMinorRow {
    explicit TMinorRow(const float* row) : TMinorRow(TRow::Load(row)) {}
    explicit TMinorRow(const TRow& row)
        : first(row.template Shuffle<1, 0, 0, 0>()), second(row.template Shuffle<2, 2, 1, 1>()),
          third(row.template Shuffle<3, 3, 3, 2>()) {}

    TRow first, second, third;
};

/// The two by two determinants under the three elements of an upper row.
template <class TRow> struct TMinorPairs {
    TMinorPairs(const TMinorRow<TRow>& b, const TMinorRow<TRow>& c)
        : first((b.second * c.third).Minus(b.third, c.second).Round()),
          second((b.first * c.third).Minus(b.third, c.first).Round()),
          third((b.first * c.second).Minus(b.second, c.first).Round()) {}

    TRow first, second, third;
};

/// Writes four determinants: element i is that of the minor without column i.
template <class TRow> void Expand(const TMinorRow<TRow>& a, const TMinorPairs<TRow>& pairs, float* minors) {
    (a.first * pairs.first).Minus(a.second, pairs.second).Plus(a.third, pairs.third).Store(minors);
}

/// The determinant from row 0 and those of its minors.
inline float Expand(const float* row, const float* minors) {
    const double sum = double{row[0]} * minors[0] - double{row[1]} * minors[1] + double{row[2]} * minors[2] -
                       double{row[3]} * minors[3];
    return static_cast<float>(sum);
}

template <class TRow> float Determinant(const float* m) {
    const TMinorRow<TRow> b(m + 8), c(m + 12);
    float minors[4];
    Expand(TMinorRow<TRow>(m + 4), TMinorPairs<TRow>(b, c), minors);
    return Expand(m, minors);
}

/// Element (i, j) is (-1)^(i+j) times minor (j, i), divided. A quotient of two floats needs no doubles.
inline void DivideAdjugate(const float* minors, float determinant, float* inverse) {
#if defined(__SSE2__)
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
#else
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            const float minor = minors[4 * j + i];
            inverse[4 * i + j] = ((i + j) % 2 ? -minor : minor) / determinant;
        }
    }
#endif
}

template <class TRow> bool Invert(const float* m, float* inverse) {
    const TMinorRow<TRow> a(m), b(m + 4), c(m + 8), d(m + 12);
    const TMinorPairs<TRow> lower(c, d);
    // Row j holds the determinants of the minors without row j.
    float minors[16];
    Expand(b, lower, minors);
    const float determinant = Expand(m, minors);
    if (determinant < 0.001 && determinant > -0.001) return false;
    Expand(a, lower, minors + 4);
    Expand(a, TMinorPairs<TRow>(b, d), minors + 8);
    Expand(a, TMinorPairs<TRow>(b, c), minors + 12);
    DivideAdjugate(minors, determinant, inverse);
    return true;
}

} // namespace
} // namespace vorlund
