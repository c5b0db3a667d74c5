#include "vorlund/data/filters/PcmConversions.h"

namespace vorlund::pcm {
namespace {

constexpr const TConversionSet* kSets[] = {
    &kScalarConversions,
#if defined(__SSE2__)
    &kSse2Conversions,
    &kAvx2Conversions,
#endif
};

} // namespace

std::span<const TConversionSet* const> GetConversionSets() {
    return kSets;
}

TConversion FindConversion(std::uint32_t from, std::uint32_t to) {
    if (from >= kFormatCount || to >= kFormatCount) return nullptr;
    TConversion conversion = nullptr;
    for (const TConversionSet* set : kSets) {
        const TConversion own = set->routines[from][to];
        if (own && set->isSupported()) conversion = own;
    }
    return conversion;
}

} // namespace vorlund::pcm
