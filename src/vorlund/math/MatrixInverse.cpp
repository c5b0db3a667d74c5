#include <vorlund/Matrix.h>

#include "vorlund/math/MatrixKernels.h"

#include <algorithm>
#include <cstdint>

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

/// Of rows `row` and `row` + 1 and the columns `i` and `j`; a float, as every determinant.
float Determinant2(const float* row, int i, int j) {
    return static_cast<float>(double{row[i]} * row[4 + j] - double{row[j]} * row[4 + i]);
}

float Determinant3(const float* m) {
    const double sum = double{m[0]} * Determinant2(m + 4, 1, 2) - double{m[1]} * Determinant2(m + 4, 0, 2) +
                       double{m[2]} * Determinant2(m + 4, 0, 1);
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
    switch (n) {
    case 2:
        return Determinant2(elements_, 0, 1);
    case 3:
        return Determinant3(elements_);
    case 4:
        return matrixKernels->routines.determinant(*this);
    default:
        return 0;
    }
}

CMatrix CMatrix::Inverse() const {
    return matrixKernels->routines.invert(*this);
}

} // namespace vorlund
