// Run only where the processor has AVX2 and FMA: nothing of this file may be shared with others, so all of it
// but the table has internal linkage or is always inline.
#include "vorlund/math/MatrixKernels.h"

#include "vorlund/math/MatrixLoops.h"
#include "vorlund/math/Points_avx2.h"
#include "vorlund/math/Row_avx2.h"

namespace vorlund {

constinit const TMatrixSet kAvx2Matrices{
    "avx2",
    [] { return HasAvx2(); },
    {Multiply<CRowAvx2>, Determinant<CRowAvx2>, Invert<CRowAvx2>, TransformEachAvx2, MultiplyEach<CRowAvx2>},
};

} // namespace vorlund
