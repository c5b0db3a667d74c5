/// \file
/// The inner loops of the sample-format converter: linear PCM samples become samples of another format.
///
///   8 to 16, 32 bits    (s - 128) shifted left by 8, 24
///   16 to 32 bits       s shifted left by 16
///   16, 32 to 8 bits    s shifted right by 8, 24, plus 128
///   32 to 16 bits       s shifted right by 16
///   integer to float    (s - 128) / 128.0, s / 32768.0, s / 2147483648.0
///   float to 8 bits     (s + 1.0) * 127.5, truncated, its low 8 bits
///   float to 16 bits    s * 32767.0, truncated, its low 16 bits
///   float to 32 bits    s * 214743648.0, truncated
///
/// Floats are scaled in double precision and truncated toward zero to a signed 32-bit integer. A product that
/// does not fit one, and NaN, counts as -2^31 on every system; that is what the conversion instructions of
/// x86 give. Nothing is clipped.
///
/// Units are samples. Every set gives the same bits.
#pragma once

#include "vorlund/data/filters/PcmBlocks.h"

#include <cstdint>

namespace vorlund::pcm {

/// The routine for these `TSampleFormat` codes, from the fastest set that the processor supports; null where
/// bytes pass through unchanged: for equal codes, and for codes outside 0..3.
TRoutine FindConversion(std::uint32_t from, std::uint32_t to);

// ---- the sets behind it, for tests and benchmarks

inline constexpr std::size_t kFormatCount = 4;

/// Routines by the code of the source, then by that of the destination; null on the diagonal.
using TConversionSet = TKernelSet<TRoutine[kFormatCount][kFormatCount]>;

TKernelSets<TConversionSet> GetConversionSets();

/// The arithmetic as it is written above.
extern const TConversionSet kScalarConversions;
/// Only in builds for x86.
extern const TConversionSet kSse2Conversions;
extern const TConversionSet kAvx2Conversions;

} // namespace vorlund::pcm
