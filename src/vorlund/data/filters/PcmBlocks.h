// How the kernel sets of the PCM converters go through a buffer.
#pragma once

#include "vorlund/api/platform/Kernels.h"

#include <cstddef>

namespace vorlund::pcm {

/// Converts `count` units, which are samples or frames, from `source` to `destination`. Takes any alignment,
/// touches nothing but whole units, and does not expect the two to overlap. Does not raise; any thread may
/// call it.
using TRoutine = void (*)(void* destination, const void* source, std::size_t count);

/// The rounding that the program has chosen.
struct TAnyMode {};

/// A base of blocks: `TBlock::Convert(to, from)` turns `kUnits` units of `kInputSize` bytes into as many of
/// `kOutputSize` bytes, while a `TMode` lives.
template <std::size_t units, std::size_t inputSize, std::size_t outputSize> struct TBlockSizes {
    static constexpr std::size_t kUnits = units;
    static constexpr std::size_t kInputSize = inputSize;
    static constexpr std::size_t kOutputSize = outputSize;
    using TMode = TAnyMode;
};

/// A routine that converts block by block. The last block ends with the last unit and may overlap the one
/// before it; what is shorter than a block is left to routine [row][column] of the set `shorter`.
///
/// `TBlock` must be local to its file. Then this is, too, and no file gets code that was compiled for the
/// processors of another.
template <class TBlock, const auto& shorter, std::size_t row, std::size_t column>
void ConvertBlocks(void* destination, const void* source, std::size_t count) {
    if (count < TBlock::kUnits) {
        shorter.routines[row][column](destination, source, count);
        return;
    }
    [[maybe_unused]] const typename TBlock::TMode mode;
    auto* const to = static_cast<std::byte*>(destination);
    const auto* const from = static_cast<const std::byte*>(source);
    const std::size_t last = count - TBlock::kUnits;
    for (std::size_t at = 0; at < last; at += TBlock::kUnits)
        TBlock::Convert(to + at * TBlock::kOutputSize, from + at * TBlock::kInputSize);
    TBlock::Convert(to + last * TBlock::kOutputSize, from + last * TBlock::kInputSize);
}

} // namespace vorlund::pcm
