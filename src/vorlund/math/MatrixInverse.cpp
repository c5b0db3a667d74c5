#include <vorlund/Matrix.h>

#include "vorlund/math/Double4.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

// Determinants of minors are results of `Determinant` and therefore floats: what is computed here in one go
// has the roundings of the expansion step by step.
namespace vorlund {
namespace {

/// A range of columns or rows as `SubMatrix` takes it, one wider for the one that is left out, and cut to
/// those that exist. In 64 bits no sum of ints overflows.
struct TRange {
    TRange(int start, int count, int skip) {
        const std::int64_t from = start;
        std::int64_t to = from + count;
        if (skip >= from && skip < to) ++to;
        first = static_cast<int>(std::clamp<std::int64_t>(from, 0, 4));
        end = static_cast<int>(std::clamp<std::int64_t>(to, 0, 4));
    }
    int first;
    int end;
};

/// For the minors that lack one row: lane i is the determinant without column i, of the rows `a`, `b` and
/// `c`.
CDouble4 MinorDeterminants(const CDouble4& a, const CDouble4& b, const CDouble4& c) {
    // Columns of the two lower rows, for each place along the upper one.
    const CDouble4 b1 = b.Shuffle<1, 0, 0, 0>(), b2 = b.Shuffle<2, 2, 1, 1>(), b3 = b.Shuffle<3, 3, 3, 2>();
    const CDouble4 c1 = c.Shuffle<1, 0, 0, 0>(), c2 = c.Shuffle<2, 2, 1, 1>(), c3 = c.Shuffle<3, 3, 3, 2>();
    const CDouble4 d1 = (b2 * c3 - b3 * c2).Round();
    const CDouble4 d2 = (b1 * c3 - b3 * c1).Round();
    const CDouble4 d3 = (b1 * c2 - b2 * c1).Round();
    return (a.Shuffle<1, 0, 0, 0>() * d1 - a.Shuffle<2, 2, 1, 1>() * d2 + a.Shuffle<3, 3, 3, 2>() * d3)
        .Round();
}

double Determinant2(const float* m) {
    return static_cast<float>(double{m[0]} * m[5] - double{m[1]} * m[4]);
}

/// Of rows 1 and 2 and the columns `i` and `j`.
double Determinant2(const float* m, int i, int j) {
    return static_cast<float>(double{m[4 + i]} * m[8 + j] - double{m[4 + j]} * m[8 + i]);
}

double Determinant3(const float* m) {
    const double sum =
        m[0] * Determinant2(m, 1, 2) - m[1] * Determinant2(m, 0, 2) + m[2] * Determinant2(m, 0, 1);
    return static_cast<float>(sum);
}

/// The determinant from row 0 and the determinants of its minors.
float Expand(const float* row, const float* minors) {
    const double sum = double{row[0]} * minors[0] - double{row[1]} * minors[1] + double{row[2]} * minors[2] -
                       double{row[3]} * minors[3];
    return static_cast<float>(sum);
}

} // namespace

CMatrix CMatrix::SubMatrix(int x, int y, int w, int h, int skipX, int skipY) const {
    const TRange columns(x, w, skipX);
    const TRange rows(y, h, skipY);
    CMatrix packed;
    int toRow = 0;
    for (int row = rows.first; row < rows.end; ++row) {
        if (row == skipY) continue;
        int to = 4 * toRow++;
        for (int column = columns.first; column < columns.end; ++column)
            if (column != skipX) packed.elements_[to++] = elements_[4 * row + column];
    }
    return packed;
}

float CMatrix::Determinant(int n) const {
    const float* const m = elements_;
    switch (n) {
    case 2:
        return static_cast<float>(Determinant2(m));
    case 3:
        return static_cast<float>(Determinant3(m));
    case 4: {
        float minors[4];
        MinorDeterminants(CDouble4::Load(m + 4), CDouble4::Load(m + 8), CDouble4::Load(m + 12)).Store(minors);
        return Expand(m, minors);
    }
    default:
        return 0;
    }
}

CMatrix CMatrix::Inverse() const {
    const CDouble4 rows[4] = {CDouble4::Load(elements_), CDouble4::Load(elements_ + 4),
                              CDouble4::Load(elements_ + 8), CDouble4::Load(elements_ + 12)};
    // Row j holds the determinants of the minors without row j.
    float minors[16];
    MinorDeterminants(rows[1], rows[2], rows[3]).Store(minors);
    const float determinant = Expand(elements_, minors);
    // The limit is absolute on purpose; so a matrix that scales by less than a tenth has no inverse.
    if (std::fabs(determinant) < 0.001) return {};
    MinorDeterminants(rows[0], rows[2], rows[3]).Store(minors + 4);
    MinorDeterminants(rows[0], rows[1], rows[3]).Store(minors + 8);
    MinorDeterminants(rows[0], rows[1], rows[2]).Store(minors + 12);
    CMatrix inverse;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            const float minor = minors[4 * j + i];
            inverse.elements_[4 * i + j] = ((i + j) % 2 ? -minor : minor) / determinant;
        }
    }
    return inverse;
}

} // namespace vorlund
