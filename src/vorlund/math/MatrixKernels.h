/// \file
/// The loops of matrices. There are two sets: one for every processor, with SSE2 where the compiler may use
/// it, and one for AVX2 and FMA, taken when the library is loaded and the processor has them. Both give the
/// same bits.
#pragma once

#include <vorlund/Matrix.h>

namespace vorlund {

/// The signatures are those of the members of `CMatrix`, which so become jumps.
struct TMatrixKernels {
    const char* name;
    bool (*isSupported)();
    CMatrix (*multiply)(const CMatrix& a, const CMatrix& b);
    /// Of all four rows.
    float (*determinant)(const CMatrix& m);
    CMatrix (*invert)(const CMatrix& m);
};

extern const TMatrixKernels kPlainMatrixKernels;
/// Only in builds for x86.
extern const TMatrixKernels kAvx2MatrixKernels;

/// The set in use.
extern const TMatrixKernels* matrixKernels;

/// Ends with null.
extern const TMatrixKernels* const kAllMatrixKernels[];

/// The elements of matrices, row by row, for the loops. Always inline: files that are compiled for certain
/// processors share no function with others.
class CMatrixAccess {
public:
    /// For results whose elements are all written next.
    [[gnu::always_inline]] static CMatrix Unset() { return CMatrix(CMatrix::TUnset{}); }
    [[gnu::always_inline]] static float* Elements(CMatrix& m) { return m.elements_; }
    [[gnu::always_inline]] static const float* Elements(const CMatrix& m) { return m.elements_; }
};

} // namespace vorlund
