// Compiled with AVX2 and FMA, and run only where the processor has them: nothing of this file may be shared
// with others, so all of it but the table has internal linkage or is always inline.
#include "vorlund/math/MatrixKernels.h"

#include "vorlund/math/MatrixLoops.h"
#include "vorlund/math/Row_avx2.h"

namespace vorlund {

constinit const TMatrixKernels kAvx2MatrixKernels{
    "avx2",
    // Asks for the system's support of the registers, too.
    [] { return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"); },
    Multiply<CRowAvx2>,
    Determinant<CRowAvx2>,
    Invert<CRowAvx2>,
};

} // namespace vorlund
