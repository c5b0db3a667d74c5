/// \file
/// The loops of matrices. There are two sets: one for every processor, with SSE2 where the compiler may use
/// it, and one for AVX2 and FMA, taken when the library is loaded and the processor has them. Both give the
/// same bits.
#pragma once

namespace vorlund {

/// Elements are passed row by row. Results overlap no argument.
struct TMatrixKernels {
    const char* name;
    bool (*isSupported)();
    void (*multiply)(const float* a, const float* b, float* product);
    /// The point (x, y, z, 1) times `m`; writes four elements, the last of which means nothing.
    void (*transform)(float x, float y, float z, const float* m, float* result);
    float (*determinant)(const float* m);
    /// False when the determinant is too small; nothing is written then.
    bool (*invert)(const float* m, float* inverse);
};

extern const TMatrixKernels kPlainMatrixKernels;
#if defined(VORLUND_MATRIX_AVX2)
extern const TMatrixKernels kAvx2MatrixKernels;
#endif

/// The set in use.
extern const TMatrixKernels* matrixKernels;

/// Ends with null.
extern const TMatrixKernels* const kAllMatrixKernels[];

} // namespace vorlund
