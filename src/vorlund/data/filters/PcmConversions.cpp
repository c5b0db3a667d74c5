#include "vorlund/data/filters/PcmConversions.h"

namespace vorlund::pcm {
namespace {

constexpr const TConversionSet* kSets[] = {&kScalarConversions,
                                           VRL_X86_SETS(&kSse2Conversions, &kAvx2Conversions)};

} // namespace

TKernelSets<TConversionSet> GetConversionSets() {
    return kSets;
}

TRoutine FindConversion(std::uint32_t from, std::uint32_t to) {
    if (from >= kFormatCount || to >= kFormatCount) return nullptr;
    return FindFastestRoutine(GetConversionSets(),
                              [=](const TConversionSet& set) { return set.routines[from][to]; });
}

} // namespace vorlund::pcm
