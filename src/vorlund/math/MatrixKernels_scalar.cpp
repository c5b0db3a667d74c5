#include "vorlund/math/MatrixKernels.h"

#include "vorlund/math/MatrixLoops.h"
#include "vorlund/math/Row_scalar.h"

namespace vorlund {

constinit const TMatrixSet kScalarMatrices{
    "scalar",
    [] { return true; },
    {Multiply<CRowScalar>, Determinant<CRowScalar>, Invert<CRowScalar>, TransformEach,
     MultiplyEach<CRowScalar>},
};

} // namespace vorlund
