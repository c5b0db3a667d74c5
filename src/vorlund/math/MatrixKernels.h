/// \file
/// The loops of matrices. The fastest set is chosen when the library is loaded; all give the same bits.
#pragma once

#include "vorlund/api/platform/Kernels.h"

#include <vorlund/Matrix.h>

namespace vorlund {

/// The signatures are those of the members of `CMatrix`, which so become jumps.
struct TMatrixRoutines {
    CMatrix (*multiply)(const CMatrix& a, const CMatrix& b);
    /// Of all four rows.
    float (*determinant)(const CMatrix& m);
    CMatrix (*invert)(const CMatrix& m);
    /// Each times `m`; the results may be the operands.
    void (*transformEach)(const CMatrix& m, const CVector* points, CVector* results, std::size_t count);
    void (*multiplyEach)(const CMatrix& m, const CMatrix* matrices, CMatrix* results, std::size_t count);
};

using TMatrixSet = TKernelSet<TMatrixRoutines>;

TKernelSets<TMatrixSet> GetMatrixSets();

extern const TMatrixSet kScalarMatrices;
/// Only in builds for x86.
extern const TMatrixSet kSse2Matrices;
extern const TMatrixSet kAvx2Matrices;

/// The set in use.
extern const TMatrixSet* matrixKernels;

/// The elements of matrices, row by row, for the loops.
class CMatrixAccess {
public:
    /// For results whose elements are all written next.
    VRL_INLINE static CMatrix Unset() { return CMatrix(CMatrix::TUnset{}); }
    VRL_INLINE static float* Elements(CMatrix& m) { return m.elements_; }
    VRL_INLINE static const float* Elements(const CMatrix& m) { return m.elements_; }
};

} // namespace vorlund
