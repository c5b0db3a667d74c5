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
/// bits on every system and with all compiler options and function attributes of an application, GCC's and
/// Clang's `-ffast-math` and its parts among them (how, and within which bounds: InlineArithmetic.h).
/// Infinities and NaN follow the rules of IEEE 754; nothing here raises.
///
/// A plain value: trivially copyable, usable in constant expressions, and safe to share between threads when
/// nobody writes to it.
///
/// \code{.cpp}
/// CVector v1(3, 0, 4);
/// std::printf("%.1f\n", v1.Length()); // prints 5.0
/// v1.Normalize();
/// std::printf("%.1f %.1f\n", v1.x, v1.z); // prints 0.6 0.8
/// \endcode
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

    VRL_INLINE CVector operator+(const CVector& other) const;
    VRL_INLINE CVector operator-(const CVector& other) const;
    VRL_INLINE CVector& operator+=(const CVector& other);
    VRL_INLINE CVector& operator-=(const CVector& other);

    /// Every component multiplied or divided; a division by 0 gives infinities and NaN.
    VRL_INLINE CVector operator*(float factor) const;
    VRL_INLINE CVector operator/(float divisor) const;
    VRL_INLINE CVector& operator*=(float factor);
    VRL_INLINE CVector& operator/=(float divisor);

    /// The scalar product.
    VRL_INLINE float operator*(const CVector& other) const;
    VRL_INLINE float Dot(const CVector& other) const;
    /// The vector product: right-handed, so that x cross y is z.
    VRL_INLINE CVector Cross(const CVector& b) const;

    /// The square of the length, and the length.
    VRL_INLINE float Length2() const;
    VRL_API float Length() const;
    /// Makes the length 1; a vector of length 0 stays as it is.
    VRL_API void Normalize();

    /// The point (x, y, z, 1) times `m`. The fourth column is ignored: nothing is divided by w. Defined in
    /// Matrix.h.
    VRL_INLINE CVector operator*(const CMatrix& m) const;
    VRL_INLINE CVector& operator*=(const CMatrix& m);

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

#if VRL_IS_DEFINED
// NOLINTBEGIN(misc-definitions-in-headers): without `inline` in one file of the library only.

namespace exactmath {

/// The scalar product before it is rounded. Products of floats are exact.
[[gnu::always_inline]] inline double ScalarProduct(const CVector& a, const CVector& b) {
    const double first = Product(Widen(a.x), Widen(b.x));
    const double two = ExactProductPlus(Widen(a.y), Widen(b.y), first);
    return ExactProductPlus(Widen(a.z), Widen(b.z), two);
}
/// a * b - c * d.
[[gnu::always_inline]] inline float Minor(float a, float b, float c, float d) {
    return Round(ExactProductPlus(Widen(a), Widen(b), -Product(Widen(c), Widen(d))));
}

} // namespace exactmath

// Sums, differences, products and quotients of two floats are computed as floats: double arithmetic that is
// then rounded gives the same bits, because a double has more than twice the digits (S. A. Figueroa, "When is
// double rounding innocuous?", 1995).
VRL_INLINE CVector CVector::operator+(const CVector& other) const {
    return {exactmath::Sum(x, other.x), exactmath::Sum(y, other.y), exactmath::Sum(z, other.z)};
}
VRL_INLINE CVector CVector::operator-(const CVector& other) const {
    return {exactmath::Difference(x, other.x), exactmath::Difference(y, other.y),
            exactmath::Difference(z, other.z)};
}
VRL_INLINE CVector& CVector::operator+=(const CVector& other) {
    return *this = *this + other;
}
VRL_INLINE CVector& CVector::operator-=(const CVector& other) {
    return *this = *this - other;
}
VRL_INLINE CVector CVector::operator*(float factor) const {
    return {exactmath::Product(x, factor), exactmath::Product(y, factor), exactmath::Product(z, factor)};
}
VRL_INLINE CVector& CVector::operator*=(float factor) {
    return *this = *this * factor;
}
VRL_INLINE CVector& CVector::operator/=(float divisor) {
    exactmath::Divide(x, y, z, divisor);
    return *this;
}
VRL_INLINE CVector CVector::operator/(float divisor) const {
    CVector result = *this;
    return result /= divisor;
}

VRL_INLINE float CVector::operator*(const CVector& other) const {
    return exactmath::Round(exactmath::ScalarProduct(*this, other));
}
VRL_INLINE float CVector::Dot(const CVector& other) const {
    return exactmath::Round(exactmath::ScalarProduct(*this, other));
}
VRL_INLINE CVector CVector::Cross(const CVector& b) const {
    return {exactmath::Minor(y, b.z, z, b.y), exactmath::Minor(z, b.x, x, b.z),
            exactmath::Minor(x, b.y, y, b.x)};
}
VRL_INLINE float CVector::Length2() const {
    return exactmath::Round(exactmath::ScalarProduct(*this, *this));
}

// NOLINTEND(misc-definitions-in-headers)
#endif

} // namespace vorlund
