#include <vorlund/Matrix.h>

#include "vorlund/math/Trigonometry.h"

namespace vorlund {
namespace {

/// Sine and cosine in single precision: the double ones rounded once.
struct TTurn {
    explicit TTurn(double angle) : TTurn(SineAndCosine(angle)) {}
    explicit TTurn(const TSineAndCosine& exact)
        : s(static_cast<float>(exact.sine)), c(static_cast<float>(exact.cosine)) {}

    float s;
    float c;
};

/// The cotangent of half an angle, from single-precision values, so that it is exactly 1 for a right angle.
float HalfCotangent(double angle) {
    const TTurn half(angle / 2);
    return half.c / half.s;
}

} // namespace

CMatrix CMatrix::Translation(float x, float y, float z) {
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1};
}

CMatrix CMatrix::Scale(float x, float y, float z) {
    return {x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1};
}

// Both sines are positive, for callers who rely on this symmetric matrix.
CMatrix CMatrix::RotationX(float a) {
    const TTurn t(a);
    return {1, 0, 0, 0, 0, t.c, t.s, 0, 0, t.s, t.c, 0, 0, 0, 0, 1};
}

CMatrix CMatrix::RotationY(float a) {
    const TTurn t(a);
    return {t.c, 0, -t.s, 0, 0, 1, 0, 0, t.s, 0, t.c, 0, 0, 0, 0, 1};
}

CMatrix CMatrix::RotationZ(float a) {
    const TTurn t(a);
    return {t.c, t.s, 0, 0, -t.s, t.c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}

CMatrix CMatrix::Rotation(float ax, float ay, float az) {
    TSineAndCosine turns[3];
    SinesAndCosines({ax, ay, az}, turns);
    const TTurn x(turns[0]), y(turns[1]), z(turns[2]);
    const double cx = x.c, sx = x.s, cy = y.c, sy = y.s, cz = z.c, sz = z.s;
    const auto rounded = [](double value) { return static_cast<float>(value); };
    return {rounded(cy * cz),
            rounded(sx * sy * cz + cx * sz),
            rounded(-cx * sy * cz + sx * sz),
            0,
            rounded(-cy * sz),
            rounded(-sx * sy * sz + cx * cz),
            rounded(cx * sy * sz + sx * cz),
            0,
            rounded(sy),
            rounded(-sx * cy),
            rounded(cx * cy),
            0,
            0,
            0,
            0,
            1};
}

CMatrix CMatrix::PerspectiveFov(float fov, float aspect, float zNear, float zFar) {
    const double nearZ = zNear, farZ = zFar, depth = farZ - nearZ;
    CMatrix m;
    m.elements_[0] = HalfCotangent(fov);
    // Kept for callers: the angle is divided, not its tangent.
    m.elements_[5] = HalfCotangent(double{fov} / aspect);
    m.elements_[10] = static_cast<float>(farZ / depth);
    m.elements_[11] = 1;
    m.elements_[14] = static_cast<float>(-nearZ * farZ / depth);
    m.elements_[15] = 0;
    return m;
}

} // namespace vorlund
