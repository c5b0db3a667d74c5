#include "vorlund/math/MatrixKernels.h"

#include "vorlund/math/MatrixLoops.h"
#include "vorlund/math/Row_sse2.h"

namespace vorlund {

constinit const TMatrixSet kSse2Matrices{
    "sse2",
    [] { return true; },
    {Multiply<CRowSse2>, Determinant<CRowSse2>, Invert<CRowSse2>, TransformEach, MultiplyEach<CRowSse2>},
};

} // namespace vorlund
