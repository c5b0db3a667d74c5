// How the sets of channel mixes go through a buffer.
#pragma once

#include "vorlund/data/filters/PcmMixes.h"

namespace vorlund::pcm {

/// The routine of the pair of channel numbers and the sample format: mixes `TBlock::kFrames` frames at a time
/// by `TBlock::Mix(to, from)`. The last block ends with the last frame and may overlap the one before it;
/// what is shorter than a block is the reference's.
///
/// `TBlock` must be local to its file. Then this is, too, and no file gets code that was compiled for the
/// processors of another.
template <class TBlock, std::size_t pair, std::size_t format>
void MixBlocks(void* destination, const void* source, std::size_t frames) {
    if (frames < TBlock::kFrames) {
        kScalarMixes.routines[pair][format](destination, source, frames);
        return;
    }
    constexpr std::size_t kSampleSize = format == 0 ? 1 : format == 1 ? 2 : 4;
    constexpr std::size_t kInput = kMixPairs[pair].inputChannels * kSampleSize;
    constexpr std::size_t kOutput = kMixPairs[pair].outputChannels * kSampleSize;
    auto* const to = static_cast<std::uint8_t*>(destination);
    const auto* const from = static_cast<const std::uint8_t*>(source);
    const std::size_t last = frames - TBlock::kFrames;
    for (std::size_t at = 0; at < last; at += TBlock::kFrames)
        TBlock::Mix(to + at * kOutput, from + at * kInput);
    TBlock::Mix(to + last * kOutput, from + last * kInput);
}

} // namespace vorlund::pcm
