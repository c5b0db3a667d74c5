/// \file
/// `CMatrix`, a four by four matrix of single-precision numbers, and its products with vectors.
#pragma once

#include <vorlund/Platform.h>
#include <vorlund/Vector.h>

#include <cstddef>

namespace vorlund {

enum TAxis : int {
    AXIS_X = 0,
    AXIS_Y = 1,
    AXIS_Z = 2,
};

/// A transformation of row vectors: v' = v * M, so that `A * B` does A first, and the translation is the
/// fourth row. Elements are stored row by row: row r, column c is element 4r + c. Angles are radians.
///
/// The arithmetic works in double precision and rounds each element of a result once. A sine or cosine in it
/// is rounded to single precision first. It is compiled in the library, so that results have the same bits on
/// every system and with all compiler options of an application, and so that the library can use what the
/// processor has. Infinities and NaN follow the rules of IEEE 754; nothing here raises.
///
/// A plain value: trivially copyable, and safe to share between threads when nobody writes to it.
///
/// \code{.cpp}
/// const CMatrix turnThenMove = CMatrix::RotationZ(1.57079633f) * CMatrix::Translation(0, 0, 5);
/// const CVector place = CVector(1, 0, 0) * turnThenMove;
/// std::printf("%.1f %.1f %.1f\n", place.x, place.y, place.z); // prints -0.0 1.0 5.0
/// \endcode
class CMatrix {
public:
    /// The identity.
    constexpr CMatrix() : elements_{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1} {}

    /// The elements in the order of their indices.
    constexpr CMatrix(float m0, float m1, float m2, float m3, float m4, float m5, float m6, float m7,
                      float m8, float m9, float m10, float m11, float m12, float m13, float m14, float m15)
        : elements_{m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15} {}

    /// Rows 0 to 2 from `r0` to `r2`. The whole fourth column is 1, the fourth vector is not used, and
    /// elements 12 to 14 are 0; this is kept for applications that rely on it.
    constexpr CMatrix(const CVector& r0, const CVector& r1, const CVector& r2, const CVector& /*r3*/)
        : elements_{r0.x, r0.y, r0.z, 1, r1.x, r1.y, r1.z, 1, r2.x, r2.y, r2.z, 1, 0, 0, 0, 1} {}

    /// Element `i`, 0 to 15; any other gives the value of a cell that is always 0.
    float operator[](int i) const { return IsInside(i) ? elements_[i] : kOutside; }
    /// The same to write to. Any other `i` gives one cell for all of them, 0 when the library is loaded;
    /// threads that use it disturb each other.
    float& operator[](int i) { return IsInside(i) ? elements_[i] : OutsideCell(); }

    /// The matrix product.
    VRL_API CMatrix operator*(const CMatrix& other) const;
    VRL_API CMatrix& operator*=(const CMatrix& other);

    /// `results[i]` becomes `points[i] * *this`, or `matrices[i] * *this`: the same bits as one by one, in
    /// less time. The results may be the operands themselves, and must not overlap them otherwise. Since
    /// version 0.1.
    VRL_API void Transform(const CVector* points, CVector* results, std::size_t count) const;
    VRL_API void Multiply(const CMatrix* matrices, CMatrix* results, std::size_t count) const;

    /// Every element multiplied or divided; a division by 0 gives infinities and NaN.
    VRL_API CMatrix operator*(float factor) const;
    VRL_API CMatrix operator/(float divisor) const;
    VRL_API CMatrix& operator*=(float factor);
    VRL_API CMatrix& operator/=(float divisor);

    VRL_API CMatrix Transpose() const;

    /// An identity matrix whose top left corner is filled with the elements of columns [x, x + w) and rows
    /// [y, y + h), without column `skipX` and row `skipY`. A range that contains the left-out one is one
    /// wider, so `SubMatrix(0, 0, 3, 3, j, i)` is what is left without row i and column j. Columns and rows
    /// that the matrix does not have are left out, too; any numbers are allowed.
    VRL_API CMatrix SubMatrix(int x, int y, int w, int h, int skipX, int skipY) const;

    /// The determinant of the top left n x n block, n from 2 to 4; any other n gives 0. Expanded along row 0,
    /// the determinants of the minors being results of this function, rounded as such.
    VRL_API float Determinant(int n) const;

    /// The inverse: the adjugate divided by the determinant. It is the identity when the
    /// determinant is between -0.001 and 0.001; this is kept for applications that rely on it.
    VRL_API CMatrix Inverse() const;

    VRL_API static CMatrix Translation(float x, float y, float z);
    VRL_API static CMatrix Scale(float x, float y, float z);

    /// Rotations around one axis. For applications that rely on it, `RotationX` keeps a positive sign for
    /// both of its sines and is symmetric, unlike the other two.
    VRL_API static CMatrix RotationX(float a);
    VRL_API static CMatrix RotationY(float a);
    VRL_API static CMatrix RotationZ(float a);
    /// The rotation by three angles that `GetRotation` finds again.
    VRL_API static CMatrix Rotation(float ax, float ay, float az);

    /// A perspective for divided depths from 0 at `zNear` to 1 at `zFar`. `fov` is the horizontal angle of
    /// view; the vertical one is the angle `fov` / `aspect`, which is kept for applications that rely on it.
    VRL_API static CMatrix PerspectiveFov(float fov, float aspect, float zNear, float zFar);

    /// The length of the first three elements of row 0, 1 or 2; any other axis gives 1.
    VRL_API float GetScale(TAxis axis) const;
    /// Divides the first three elements of rows 0 to 2 by the row's `GetScale`; of a zero row they become
    /// NaN.
    VRL_API void Normalize();
    /// The angle of `Rotation` around `axis`, of the normalised matrix. When the angle around y is a right
    /// one, that around x is taken as 0. Any other axis gives 0.
    VRL_API float GetRotation(TAxis axis) const;

    /// Whether no element differs by more than 1e-7. Not transitive, and a NaN equals nothing.
    VRL_API bool operator==(const CMatrix& other) const;
    bool operator!=(const CMatrix& other) const { return !(*this == other); }

    VRL_API static const CMatrix Identity;
    /// All elements 0.
    VRL_API static const CMatrix Zero;

private:
    friend class CVector;
    friend class CMatrixAccess;

    /// For results whose elements are all written next.
    struct TUnset {};
    explicit CMatrix(TUnset) {}

    /// What the const form gives outside.
    static constexpr float kOutside = 0;

    static constexpr bool IsInside(int i) { return static_cast<unsigned int>(i) < 16; }
    VRL_API static float& OutsideCell();

    float elements_[16];
};

#if VRL_IS_DEFINED
// NOLINTBEGIN(misc-definitions-in-headers): without `inline` in one file of the library only.

VRL_INLINE CVector CVector::operator*(const CMatrix& m) const {
    const float* const e = exactmath::HideElements(m.elements_);
    const double point[3] = {exactmath::Widen(x), exactmath::Widen(y), exactmath::Widen(z)};
#if VRL_HAS_PAIRS
    const auto first = exactmath::TimesColumn<exactmath::TPair>(point, e);
#else
    const double first[2] = {exactmath::TimesColumn<double>(point, e),
                             exactmath::TimesColumn<double>(point, e + 1)};
#endif
    const auto last = exactmath::TimesColumn<double>(point, e + 2);
    return {exactmath::Round(first[0]), exactmath::Round(first[1]), exactmath::Round(last)};
}
VRL_INLINE CVector& CVector::operator*=(const CMatrix& m) {
    return *this = *this * m;
}

// NOLINTEND(misc-definitions-in-headers)
#endif

} // namespace vorlund
