/// \file
/// `CVector`, three single-precision numbers.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund {

class CMatrix;

/// A vector or a point in space. Vectors are row vectors: a matrix stands to their right (`v * m`).
///
/// The arithmetic works in double precision and rounds each component of a result once. It stands in the
/// library and not in this header, so that results have the same bits on every system and with whatever
/// options an application is compiled. Infinities and NaN go through it by the rules of IEEE 754; nothing
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

    VRL_API CVector operator+(const CVector& other) const;
    VRL_API CVector operator-(const CVector& other) const;
    VRL_API CVector& operator+=(const CVector& other);
    VRL_API CVector& operator-=(const CVector& other);

    /// Every component multiplied or divided; a division by 0 gives infinities and NaN.
    VRL_API CVector operator*(float factor) const;
    VRL_API CVector operator/(float divisor) const;
    VRL_API CVector& operator*=(float factor);
    VRL_API CVector& operator/=(float divisor);

    /// The scalar product.
    VRL_API float operator*(const CVector& other) const;
    VRL_API float Dot(const CVector& other) const;
    /// The vector product: right-handed, so that x cross y is z.
    VRL_API CVector Cross(const CVector& b) const;

    /// The square of the length, and the length.
    VRL_API float Length2() const;
    VRL_API float Length() const;
    /// Makes the length 1; a vector of length 0 stays as it is.
    VRL_API void Normalize();

    /// The point (x, y, z, 1) times `m`. The fourth column is ignored: nothing is divided by w.
    VRL_API CVector operator*(const CMatrix& m) const;
    VRL_API CVector& operator*=(const CMatrix& m);

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
};

} // namespace vorlund
