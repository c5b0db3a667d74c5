#include <vorlund/Matrix.h>

#include "vorlund/math/Double4.h"
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
    const CDouble4 b0 = CDouble4::Load(other.elements_);
    const CDouble4 b1 = CDouble4::Load(other.elements_ + 4);
    const CDouble4 b2 = CDouble4::Load(other.elements_ + 8);
    const CDouble4 b3 = CDouble4::Load(other.elements_ + 12);
    CMatrix product;
    for (int row = 0; row < 16; row += 4) {
        const CDouble4 a = CDouble4::Load(elements_ + row);
        const CDouble4 sum = a.Shuffle<0, 0, 0, 0>() * b0 + a.Shuffle<1, 1, 1, 1>() * b1 +
                             a.Shuffle<2, 2, 2, 2>() * b2 + a.Shuffle<3, 3, 3, 3>() * b3;
        sum.Store(product.elements_ + row);
    }
    return product;
}
CMatrix& CMatrix::operator*=(const CMatrix& other) {
    return *this = *this * other;
}

// Products and quotients of two floats need no doubles; see Vector.cpp.
CMatrix CMatrix::operator*(float factor) const {
    CMatrix product;
    for (int i = 0; i < 16; ++i) product.elements_[i] = elements_[i] * factor;
    return product;
}
CMatrix CMatrix::operator/(float divisor) const {
    CMatrix quotient;
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
    CMatrix transpose;
    for (int i = 0; i < 16; ++i) transpose.elements_[i] = elements_[i % 4 * 4 + i / 4];
    return transpose;
}

bool CMatrix::operator==(const CMatrix& other) const {
    return std::equal(elements_, elements_ + 16, other.elements_, IsWithinTolerance);
}

} // namespace vorlund
