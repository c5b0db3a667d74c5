/// \file
/// The inner loops of the channel-number converter: interleaved PCM with 1, 2 or 6 channels becomes PCM with
/// another of these numbers, in any of the four sample formats.
///
/// Channels of a 6-channel frame: front left and right, centre, low-frequency, rear left and right. A mix
/// down divides each term and then adds, so nothing overflows and nothing is clipped:
///
///   1 to 2, 1 to 6   every channel is the mono sample
///   2 to 1           L / 2 + R / 2
///   2 to 6           L, R and four channels of silence
///   6 to 1           the sum of all six, each divided by 6
///   6 to 2           s0 / 4 + s2 / 4 + s3 / 4 + s4 / 4 and s1 / 4 + s2 / 4 + s3 / 4 + s5 / 4
///
/// Integer divisions round toward zero, those of 8-bit samples on the unsigned byte, so that six silent bytes
/// 0x80 become 0x7E. Float terms are divided and added, from left to right, in double precision, and the sum
/// is rounded to float once. A sum that is not a number is some quiet NaN; sets may differ in its sign and
/// payload, and in nothing else. Units are frames.
#pragma once

#include "vorlund/data/filters/PcmBlocks.h"

#include <cstdint>
#include <iterator>

namespace vorlund::pcm {

/// The routine for these channel numbers and this sample-size code, from the fastest set that the processor
/// supports; null where bytes pass through unchanged: for equal numbers, for numbers other than 1, 2 and 6,
/// and for codes outside 0..3.
TRoutine FindMix(std::uint32_t inputChannels, std::uint32_t outputChannels, std::uint32_t sampleSizeCode);

// ---- the sets behind it, for tests and benchmarks

/// The pairs of different channel numbers, in the order of the routines.
struct TMixPair {
    std::uint32_t inputChannels;
    std::uint32_t outputChannels;
};
inline constexpr TMixPair kMixPairs[] = {{1, 2}, {1, 6}, {2, 1}, {2, 6}, {6, 1}, {6, 2}};
inline constexpr std::size_t kMixPairCount = std::size(kMixPairs);
inline constexpr std::size_t kMixFormatCount = 4;

/// Routines by pair, then by sample-size code.
using TMixSet = TKernelSet<TRoutine[kMixPairCount][kMixFormatCount]>;

TKernelSets<TMixSet> GetMixSets();

/// As `FindMix`, from one set; also null where the set has no routine of its own.
TRoutine FindMix(const TMixSet& set, std::uint32_t inputChannels, std::uint32_t outputChannels,
                 std::uint32_t sampleSizeCode);

extern const TMixSet kScalarMixes;
/// Only in builds for x86.
extern const TMixSet kSse2Mixes;
extern const TMixSet kAvx2Mixes;

} // namespace vorlund::pcm
