/// \file
/// `CVector`, three single-precision numbers. Matrix.h includes this file and defines the products of vectors
/// with matrices.
#pragma once

#include <vorlund/InlineArithmetic.h>

namespace vorlund {

class CMatrix;

/// A vector or a point in space. Vectors are row vectors: a matrix multiplies from the right (`v * m`).
///
/// The arithmetic works in double precision and rounds each component of a result once. Results have the same
/// bits on every system and with all compiler options of an application: what options could change is
/// compiled in the library (InlineArithmetic.h). Infinities and NaN follow the rules of IEEE 754; nothing
/// here raises.
///
/// A plain value: trivially copyable, usable in constant expressions, and safe to share between threads when
/// nobody writes to it.
class CVector {
public:
    /// (0, 0, 0).
    constexpr CVector() = default;
    constexpr CVector(float xValue, float yValue, float zValue) : x(xValue), y(yValue), z(zValue) {}

    /// Component `i`: 0 is x, 1 is y, 2 is z; any other gives 0.
    constexpr float operator[](int i) const { return i == 0 ? x : i == 1 ? y : i == 2 ? z : 0.0f; }
    /// The same to write to. Any other `i` gives one cell for all of them, 0 when the library is loaded;
    /// threads that use it disturb each other.
    float& operator[](int i) { return i == 0 ? x : i == 1 ? y : i == 2 ? z : OutsideCell(); }

    VRL_FLOATS CVector operator+(const CVector& other) const;
    VRL_FLOATS CVector operator-(const CVector& other) const;
    VRL_FLOATS CVector& operator+=(const CVector& other);
    VRL_FLOATS CVector& operator-=(const CVector& other);

    /// Every component multiplied or divided; a division by 0 gives infinities and NaN.
    VRL_FLOATS CVector operator*(float factor) const;
    VRL_FLOATS CVector operator/(float divisor) const;
    VRL_FLOATS CVector& operator*=(float factor);
    VRL_FLOATS CVector& operator/=(float divisor);

    /// The scalar product.
    VRL_DOUBLES float operator*(const CVector& other) const;
    VRL_DOUBLES float Dot(const CVector& other) const;
    /// The vector product: right-handed, so that x cross y is z.
    VRL_DOUBLES CVector Cross(const CVector& b) const;

    /// The square of the length, and the length.
    VRL_DOUBLES float Length2() const;
    VRL_API float Length() const;
    /// Makes the length 1; a vector of length 0 stays as it is.
    VRL_API void Normalize();

    /// The point (x, y, z, 1) times `m`. The fourth column is ignored: nothing is divided by w. Defined in
    /// Matrix.h.
    VRL_DOUBLES CVector operator*(const CMatrix& m) const;
    VRL_DOUBLES CVector& operator*=(const CMatrix& m);

    /// Whether no component differs by more than 1e-7. Not transitive, and a NaN equals nothing.
    VRL_API bool operator==(const CVector& other) const;
    bool operator!=(const CVector& other) const { return !(*this == other); }

    /// (0, 0, 0) and (0, 1, 0).
    VRL_API static const CVector Zero;
    VRL_API static const CVector Up;

    float x = 0;
    float y = 0;
    float z = 0;

private:
    VRL_API static float& OutsideCell();

    /// The scalar product before it is rounded.
    double Sum(const CVector& b) const { return double{x} * b.x + double{y} * b.y + double{z} * b.z; }
};

// Sums, differences, products and quotients of two floats are computed as floats: double arithmetic that is
// then rounded gives the same bits, because a double has more than twice the digits (S. A. Figueroa, "When is
// double rounding innocuous?", 1995).
#if VRL_FLOATS_ARE_HERE
VRL_FLOATS CVector CVector::operator+(const CVector& other) const {
    return {x + other.x, y + other.y, z + other.z};
}
VRL_FLOATS CVector CVector::operator-(const CVector& other) const {
    return {x - other.x, y - other.y, z - other.z};
}
VRL_FLOATS CVector& CVector::operator+=(const CVector& other) {
    return *this = *this + other;
}
VRL_FLOATS CVector& CVector::operator-=(const CVector& other) {
    return *this = *this - other;
}
VRL_FLOATS CVector CVector::operator*(float factor) const {
    return {x * factor, y * factor, z * factor};
}
VRL_FLOATS CVector CVector::operator/(float divisor) const {
    return {x / divisor, y / divisor, z / divisor};
}
VRL_FLOATS CVector& CVector::operator*=(float factor) {
    return *this = *this * factor;
}
VRL_FLOATS CVector& CVector::operator/=(float divisor) {
    return *this = *this / divisor;
}
#endif

#if VRL_DOUBLES_ARE_HERE
VRL_DOUBLES float CVector::operator*(const CVector& other) const {
    return static_cast<float>(Sum(other));
}
VRL_DOUBLES float CVector::Dot(const CVector& other) const {
    return static_cast<float>(Sum(other));
}
VRL_DOUBLES CVector CVector::Cross(const CVector& b) const {
    const double left[3] = {x, y, z};
    return {static_cast<float>(left[1] * b.z - left[2] * b.y),
            static_cast<float>(left[2] * b.x - left[0] * b.z),
            static_cast<float>(left[0] * b.y - left[1] * b.x)};
}
VRL_DOUBLES float CVector::Length2() const {
    return static_cast<float>(Sum(*this));
}
#endif

} // namespace vorlund
