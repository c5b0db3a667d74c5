#include "vorlund/data/filters/PcmReals.h"

namespace vorlund::pcm {
namespace {

constexpr const TRealsSet* kSets[] = {&kScalarReals, VRL_X86_SETS(&kSse2Reals, &kAvx2Reals)};

} // namespace

TKernelSets<TRealsSet> GetRealsSets() {
    return kSets;
}

TRoutine FindReals(std::uint32_t from) {
    return FindFastestRoutine(GetRealsSets(), [=](const TRealsSet& set) { return set.routines[0][from]; });
}

} // namespace vorlund::pcm
