/// \file
/// Samples as real numbers in double precision with full scale at 1: (s - 128) / 2^7, s / 2^15, s / 2^31, and
/// floats as they are. All of that is exact.
///
/// Units are samples. Every set gives the same bits.
#pragma once

#include "vorlund/data/filters/PcmBlocks.h"

#include <cstdint>

namespace vorlund::pcm {

/// The routine for a `TSampleFormat` code of 0..3, from the fastest set that the processor supports.
TRoutine FindReals(std::uint32_t from);

// ---- the sets behind it, for tests and benchmarks

inline constexpr std::size_t kRealsCount = 4;

/// One row, by the code of the source.
using TRealsSet = TKernelSet<TRoutine[1][kRealsCount]>;

TKernelSets<TRealsSet> GetRealsSets();

/// The arithmetic as it is written above.
extern const TRealsSet kScalarReals;
/// Only in builds for x86.
extern const TRealsSet kSse2Reals;
extern const TRealsSet kAvx2Reals;

} // namespace vorlund::pcm
