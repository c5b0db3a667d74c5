#include <vorlund/Matrix.h>

#include "vorlund/math/MatrixKernels.h"
#include "vorlund/math/Tolerance.h"

#include <algorithm>

namespace vorlund {

constinit const CMatrix CMatrix::Identity;
constinit const CMatrix CMatrix::Zero(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);

float& CMatrix::OutsideCell() {
    static float cell = 0;
    return cell;
}

CMatrix CMatrix::operator*(const CMatrix& other) const {
    return matrixKernels->routines.multiply(*this, other);
}
CMatrix& CMatrix::operator*=(const CMatrix& other) {
    return *this = *this * other;
}

void CMatrix::Transform(const CVector* points, CVector* results, std::size_t count) const {
    matrixKernels->routines.transformEach(*this, points, results, count);
}
void CMatrix::Multiply(const CMatrix* matrices, CMatrix* results, std::size_t count) const {
    matrixKernels->routines.multiplyEach(*this, matrices, results, count);
}

// Products and quotients of two floats need no doubles; see Vector.cpp.
CMatrix CMatrix::operator*(float factor) const {
    CMatrix product{TUnset{}};
    for (int i = 0; i < 16; ++i) product.elements_[i] = elements_[i] * factor;
    return product;
}
CMatrix CMatrix::operator/(float divisor) const {
    CMatrix quotient{TUnset{}};
    for (int i = 0; i < 16; ++i) quotient.elements_[i] = elements_[i] / divisor;
    return quotient;
}
CMatrix& CMatrix::operator*=(float factor) {
    return *this = *this * factor;
}
CMatrix& CMatrix::operator/=(float divisor) {
    return *this = *this / divisor;
}

CMatrix CMatrix::Transpose() const {
    CMatrix transpose{TUnset{}};
    for (int i = 0; i < 16; ++i) transpose.elements_[i] = elements_[i % 4 * 4 + i / 4];
    return transpose;
}

bool CMatrix::operator==(const CMatrix& other) const {
    return std::equal(elements_, elements_ + 16, other.elements_, IsWithinTolerance);
}

} // namespace vorlund
