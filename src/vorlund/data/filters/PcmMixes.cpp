#include "vorlund/data/filters/PcmMixes.h"

namespace vorlund::pcm {
namespace {

constexpr const TMixSet* kSets[] = {
    &kScalarMixes,
#if defined(__SSE2__)
    &kSse2Mixes,
    &kAvx2Mixes,
#endif
};

} // namespace

std::span<const TMixSet* const> GetMixSets() {
    return kSets;
}

TMix FindMix(const TMixSet& set, std::uint32_t inputChannels, std::uint32_t outputChannels,
             std::uint32_t sampleSizeCode) {
    if (sampleSizeCode >= kMixFormatCount) return nullptr;
    for (std::size_t pair = 0; pair < kMixPairCount; ++pair) {
        if (kMixPairs[pair].inputChannels != inputChannels) continue;
        if (kMixPairs[pair].outputChannels == outputChannels) return set.routines[pair][sampleSizeCode];
    }
    return nullptr;
}

TMix FindMix(std::uint32_t inputChannels, std::uint32_t outputChannels, std::uint32_t sampleSizeCode) {
    TMix mix = nullptr;
    for (const TMixSet* set : kSets) {
        if (!set->isSupported()) continue;
        if (const TMix own = FindMix(*set, inputChannels, outputChannels, sampleSizeCode)) mix = own;
    }
    return mix;
}

} // namespace vorlund::pcm
