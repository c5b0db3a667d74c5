/// \file
/// Channel mixes: every set that the processor supports against the reference. The first byte chooses the
/// pair of channel numbers and the sample format, the second the alignment; the rest are samples.
#include "vorlund/data/filters/PcmMixes.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

namespace pcm = vorlund::pcm;

constexpr std::size_t kSampleSizes[pcm::kMixFormatCount] = {1, 2, 4, 4};
constexpr std::size_t kFloat = 3;
constexpr std::size_t kAlignments = 32;
constexpr std::size_t kBehind = 64;
constexpr std::uint8_t kGuard = 0xA5;

float LoadFloat(const std::uint8_t* from) {
    float value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

/// The same bytes; where both have a NaN, its bits may differ.
bool IsSame(const std::vector<std::uint8_t>& left, const std::vector<std::uint8_t>& right, std::size_t begin,
            std::size_t end, bool isFloat) {
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (left[i] == right[i]) continue;
        if (!isFloat || i < begin || i >= end) return false;
        const std::size_t sample = i - (i - begin) % sizeof(float);
        if (!std::isnan(LoadFloat(&left[sample])) || !std::isnan(LoadFloat(&right[sample]))) return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const std::size_t format = data[0] % pcm::kMixFormatCount;
    const std::size_t pair = data[0] / pcm::kMixFormatCount % pcm::kMixPairCount;
    const std::size_t shift = data[1] % kAlignments;
    const std::size_t frames = (size - 2) / (pcm::kMixPairs[pair].inputChannels * kSampleSizes[format]);
    const std::size_t end = shift + frames * pcm::kMixPairs[pair].outputChannels * kSampleSizes[format];

    std::vector<std::uint8_t> expected(end + kBehind, kGuard);
    pcm::kScalarMixes.routines[pair][format](&expected[shift], data + 2, frames);
    for (const pcm::TMixSet* set : pcm::GetMixSets()) {
        const pcm::TRoutine mix = set->routines[pair][format];
        if (!set->isSupported() || !mix) continue;
        std::vector<std::uint8_t> result(end + kBehind, kGuard);
        mix(&result[shift], data + 2, frames);
        if (!IsSame(result, expected, shift, end, format == kFloat)) std::abort();
    }
    return 0;
}
