#include <vorlund/Matrix.h>

#include "vorlund/math/Trigonometry.h"

#include <cmath>

namespace vorlund {

float CMatrix::GetScale(TAxis axis) const {
    if (axis < AXIS_X || axis > AXIS_Z) return 1;
    const float* const row = elements_ + 4 * axis;
    return CVector(row[0], row[1], row[2]).Length();
}

void CMatrix::Normalize() {
    for (const TAxis axis : {AXIS_X, AXIS_Y, AXIS_Z}) {
        const float scale = GetScale(axis);
        float* const row = elements_ + 4 * axis;
        for (int i = 0; i < 3; ++i) row[i] /= scale;
    }
}

float CMatrix::GetRotation(TAxis axis) const {
    if (axis < AXIS_X || axis > AXIS_Z) return 0;
    CMatrix normal = *this;
    normal.Normalize();
    const float* const m = normal.elements_;
    const double ay = ArcSine(m[8]);
    if (axis == AXIS_Y) return static_cast<float>(ay);
    const double c = SineAndCosine(ay).cosine;
    if (std::fabs(c) <= 0.001) {
        // Both other axes turn the same way here (gimbal lock): z gets the whole angle.
        return axis == AXIS_X ? 0 : static_cast<float>(ArcTangent(m[1], m[5]));
    }
    const double angle = axis == AXIS_X ? ArcTangent(-m[9] / c, m[10] / c) : ArcTangent(-m[4] / c, m[0] / c);
    return static_cast<float>(angle);
}

} // namespace vorlund
