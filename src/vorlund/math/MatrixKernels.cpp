#include "vorlund/math/MatrixKernels.h"

namespace vorlund {
namespace {

constexpr const TMatrixSet* kSets[] = {&kScalarMatrices, VRL_X86_SETS(&kSse2Matrices, &kAvx2Matrices)};

} // namespace

TKernelSets<TMatrixSet> GetMatrixSets() {
    return kSets;
}

// Usable from the first instruction on, and faster once this file is initialised.
constinit const TMatrixSet* matrixKernels = &kScalarMatrices;

[[maybe_unused]] static const TMatrixSet* const chosen = matrixKernels = &FindFastestSet(GetMatrixSets());

} // namespace vorlund
