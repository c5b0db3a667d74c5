// The arithmetic of the headers is compiled here once more, for applications that call it.
#define VORLUND_DEFINES_VECTORS
#include <vorlund/Matrix.h>
#include <vorlund/Vector.h>

#include "vorlund/math/Tolerance.h"

#include <cmath>

namespace vorlund {

constinit const CVector CVector::Zero;
constinit const CVector CVector::Up(0, 1, 0);

float& CVector::OutsideCell() {
    static float cell = 0;
    return cell;
}

float CVector::Length() const {
    return static_cast<float>(std::sqrt(exactmath::ScalarProduct(*this, *this)));
}
void CVector::Normalize() {
    const float length = Length();
    if (length == 0) return;
    const double factor = 1.0 / length;
    x = static_cast<float>(x * factor);
    y = static_cast<float>(y * factor);
    z = static_cast<float>(z * factor);
}

bool CVector::operator==(const CVector& other) const {
    return IsWithinTolerance(x, other.x) && IsWithinTolerance(y, other.y) && IsWithinTolerance(z, other.z);
}

} // namespace vorlund
