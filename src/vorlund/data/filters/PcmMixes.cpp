#include "vorlund/data/filters/PcmMixes.h"

namespace vorlund::pcm {
namespace {

constexpr const TMixSet* kSets[] = {&kScalarMixes, VRL_X86_SETS(&kSse2Mixes, &kAvx2Mixes)};

} // namespace

TKernelSets<TMixSet> GetMixSets() {
    return kSets;
}

TRoutine FindMix(const TMixSet& set, std::uint32_t inputChannels, std::uint32_t outputChannels,
                 std::uint32_t sampleSizeCode) {
    if (sampleSizeCode >= kMixFormatCount) return nullptr;
    for (std::size_t pair = 0; pair < kMixPairCount; ++pair) {
        if (kMixPairs[pair].inputChannels != inputChannels) continue;
        if (kMixPairs[pair].outputChannels == outputChannels) return set.routines[pair][sampleSizeCode];
    }
    return nullptr;
}

TRoutine FindMix(std::uint32_t inputChannels, std::uint32_t outputChannels, std::uint32_t sampleSizeCode) {
    return FindFastestRoutine(GetMixSets(), [=](const TMixSet& set) {
        return FindMix(set, inputChannels, outputChannels, sampleSizeCode);
    });
}

} // namespace vorlund::pcm
