#include "vorlund/math/MatrixKernels.h"

#include "vorlund/math/MatrixLoops.h"
#include "vorlund/math/Row.h"

namespace vorlund {

constinit const TMatrixKernels kPlainMatrixKernels{
    "plain", [] { return true; }, Multiply<CRow>, Determinant<CRow>, Invert<CRow>,
};

constinit const TMatrixKernels* const kAllMatrixKernels[] = {
    &kPlainMatrixKernels,
#if defined(__SSE2__)
    &kAvx2MatrixKernels,
#endif
    nullptr,
};

// Usable from the first instruction on, and better once this file is initialised.
constinit const TMatrixKernels* matrixKernels = &kPlainMatrixKernels;

namespace {

[[maybe_unused]] const bool isChosen = [] {
    for (const TMatrixKernels* const* kernels = kAllMatrixKernels; *kernels; ++kernels)
        if ((*kernels)->isSupported()) matrixKernels = *kernels;
    return true;
}();

} // namespace
} // namespace vorlund
