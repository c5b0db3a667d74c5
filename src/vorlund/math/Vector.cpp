#include <vorlund/Matrix.h>
#include <vorlund/Vector.h>

#include "vorlund/math/MatrixKernels.h"
#include "vorlund/math/Tolerance.h"

#include <cmath>

// Sums, differences, products and quotients of two floats are computed as floats: double arithmetic that is
// then rounded gives the same bits, because a double has more than twice the digits (S. A. Figueroa, "When is
// double rounding innocuous?", 1995).
namespace vorlund {
namespace {

double DotOf(const CVector& a, const CVector& b) {
    return double{a.x} * b.x + double{a.y} * b.y + double{a.z} * b.z;
}

} // namespace

constinit const CVector CVector::Zero;
constinit const CVector CVector::Up(0, 1, 0);

float& CVector::OutsideCell() {
    static float cell = 0;
    return cell;
}

CVector CVector::operator+(const CVector& other) const {
    return {x + other.x, y + other.y, z + other.z};
}
CVector CVector::operator-(const CVector& other) const {
    return {x - other.x, y - other.y, z - other.z};
}
CVector& CVector::operator+=(const CVector& other) {
    return *this = *this + other;
}
CVector& CVector::operator-=(const CVector& other) {
    return *this = *this - other;
}

CVector CVector::operator*(float factor) const {
    return {x * factor, y * factor, z * factor};
}
CVector CVector::operator/(float divisor) const {
    return {x / divisor, y / divisor, z / divisor};
}
CVector& CVector::operator*=(float factor) {
    return *this = *this * factor;
}
CVector& CVector::operator/=(float divisor) {
    return *this = *this / divisor;
}

float CVector::operator*(const CVector& other) const {
    return Dot(other);
}
float CVector::Dot(const CVector& other) const {
    return static_cast<float>(DotOf(*this, other));
}
CVector CVector::Cross(const CVector& b) const {
    const double left[3] = {x, y, z};
    return {static_cast<float>(left[1] * b.z - left[2] * b.y),
            static_cast<float>(left[2] * b.x - left[0] * b.z),
            static_cast<float>(left[0] * b.y - left[1] * b.x)};
}

float CVector::Length2() const {
    return Dot(*this);
}
float CVector::Length() const {
    return static_cast<float>(std::sqrt(DotOf(*this, *this)));
}
void CVector::Normalize() {
    const float length = Length();
    if (length == 0) return;
    const double factor = 1.0 / length;
    x = static_cast<float>(x * factor);
    y = static_cast<float>(y * factor);
    z = static_cast<float>(z * factor);
}

CVector CVector::operator*(const CMatrix& m) const {
    float point[4];
    matrixKernels->transform(x, y, z, m.elements_, point);
    return {point[0], point[1], point[2]};
}
CVector& CVector::operator*=(const CMatrix& m) {
    return *this = *this * m;
}

bool CVector::operator==(const CVector& other) const {
    return IsWithinTolerance(x, other.x) && IsWithinTolerance(y, other.y) && IsWithinTolerance(z, other.z);
}

} // namespace vorlund
