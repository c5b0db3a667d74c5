/// \file
/// The arithmetic of conversions at true scale: samples of any format become real numbers with full scale at
/// 1, and these become samples. AudioConversion.h has the rules.
#pragma once

#include <vorlund/AudioConversion.h>

#include <cstddef>
#include <cstdint>

namespace vorlund::pcm {

/// The most samples that one call of `StoreReals` takes.
inline constexpr std::size_t kMaxReals = 512;

/// Of any number of samples.
///
/// \param from  a known `TBufferFormat`
void LoadReals(double* reals, const std::byte* source, std::uint32_t from, std::size_t count);

/// `output` gets frames of the matrix's outputs.
void MixReals(double* output, const double* input, const TMixMatrix& mix, std::size_t frames);

/// How real numbers become samples.
struct TStore {
    /// A known `TBufferFormat`.
    std::uint32_t to = BUFFER_FORMAT_16BIT;
    bool clipsFloats = false;
    bool dithers = false;
    std::uint64_t seed = 0;
};

/// \param firstSample  the number of the first one, for dither
/// \return how many were clipped
std::uint32_t StoreReals(std::byte* destination, const double* reals, const TStore& store, std::size_t count,
                         std::uint64_t firstSample);

} // namespace vorlund::pcm
