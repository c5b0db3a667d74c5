/// \file
/// The loops behind MatrixKernels.h, over any kind of row. Sums are added from left to right, as in the plain
/// loops that tests compare them with.
///
/// Determinants of minors are results of `CMatrix::Determinant` and therefore floats: what is computed here
/// in one go has the roundings of the expansion step by step.
#pragma once

#include "vorlund/math/MatrixKernels.h"

namespace vorlund {
namespace {

/// One row of a product.
template <class TRow>
void MultiplyRow(const float* left, const TRow& b0, const TRow& b1, const TRow& b2, const TRow& b3,
                 float* product) {
    const TRow a = TRow::Load(left);
    (a.template Shuffle<0, 0, 0, 0>() * b0)
        .Plus(a.template Shuffle<1, 1, 1, 1>(), b1)
        .Plus(a.template Shuffle<2, 2, 2, 2>(), b2)
        .Plus(a.template Shuffle<3, 3, 3, 3>(), b3)
        .Store(product);
}

/// The rows of the right operand of a product.
template <class TRow> class CFactor {
public:
    explicit CFactor(const CMatrix& matrix) : CFactor(CMatrixAccess::Elements(matrix)) {}

    void Multiply(const CMatrix& left, CMatrix& product) const {
        const float* const a = CMatrixAccess::Elements(left);
        float* const to = CMatrixAccess::Elements(product);
        for (int row = 0; row < 16; row += 4) MultiplyRow(a + row, row0_, row1_, row2_, row3_, to + row);
    }

private:
    explicit CFactor(const float* m)
        : row0_(TRow::Load(m)), row1_(TRow::Load(m + 4)), row2_(TRow::Load(m + 8)),
          row3_(TRow::Load(m + 12)) {}

    const TRow row0_, row1_, row2_, row3_;
};

template <class TRow> CMatrix Multiply(const CMatrix& left, const CMatrix& right) {
    CMatrix product = CMatrixAccess::Unset();
    CFactor<TRow>(right).Multiply(left, product);
    return product;
}

template <class TRow>
void MultiplyEach(const CMatrix& matrix, const CMatrix* matrices, CMatrix* results, std::size_t count) {
    const CFactor<TRow> factor(matrix);
    for (std::size_t i = 0; i < count; ++i) factor.Multiply(matrices[i], results[i]);
}

inline void TransformEach(const CMatrix& matrix, const CVector* points, CVector* results, std::size_t count) {
    // A copy, which the results cannot change.
    const CMatrix m = matrix;
    for (std::size_t i = 0; i < count; ++i) results[i] = points[i] * m;
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

/// Four determinants, not yet rounded: lane i is that of the minor without column i.
template <class TRow> TRow Expand(const TMinorRow<TRow>& a, const TMinorPairs<TRow>& pairs) {
    return (a.first * pairs.first).Minus(a.second, pairs.second).Plus(a.third, pairs.third);
}

/// The determinant from row 0 and the rounded ones of its minors.
template <class TRow> float Determinant(const float* row, const TRow& minors) {
    return (TRow::Load(row) * minors).AlternatingSum();
}

template <class TRow> float Determinant(const CMatrix& matrix) {
    const float* const m = CMatrixAccess::Elements(matrix);
    const TMinorRow<TRow> b(m + 8), c(m + 12);
    return Determinant(m, Expand(TMinorRow<TRow>(m + 4), TMinorPairs<TRow>(b, c)).Round());
}

/// The identity when the determinant is small. Kept for callers: the limit is absolute, so a
/// matrix that scales by less than a tenth has no inverse.
template <class TRow> CMatrix Invert(const CMatrix& matrix) {
    const float* const m = CMatrixAccess::Elements(matrix);
    const TMinorRow<TRow> a(m), b(m + 4), c(m + 8), d(m + 12);
    const TMinorPairs<TRow> lower(c, d);
    // Row j holds the determinants of the minors without row j.
    float minors[16];
    const TRow first = Expand(b, lower);
    first.Store(minors);
    const float determinant = Determinant(m, first.Round());
    if (determinant < 0.001 && determinant > -0.001) return CMatrix::Identity;
    Expand(a, lower).Store(minors + 4);
    Expand(a, TMinorPairs<TRow>(b, d)).Store(minors + 8);
    Expand(a, TMinorPairs<TRow>(b, c)).Store(minors + 12);
    CMatrix inverse = CMatrixAccess::Unset();
    TRow::DivideAdjugate(minors, determinant, CMatrixAccess::Elements(inverse));
    return inverse;
}

} // namespace
} // namespace vorlund
