// The bytes of the random generator.
#pragma once

#include "vorlund/api/platform/Kernels.h"

#include <cstddef>
#include <cstdint>

namespace vorlund {

constexpr std::uint32_t kRandomMultiplier = 214013;
constexpr std::uint32_t kRandomIncrement = 2531011;

/// The state after `state`.
constexpr std::uint32_t NextRandomState(std::uint32_t state) {
    return state * kRandomMultiplier + kRandomIncrement;
}

/// The byte of a state. The bits below have short periods.
constexpr std::uint8_t RandomByteOf(std::uint32_t state) {
    return static_cast<std::uint8_t>(state >> 16);
}

/// Writes the bytes of the next `count` states; returns the last of them, or `state` for none.
std::uint32_t WriteRandomBytes(std::uint32_t state, std::uint8_t* bytes, std::size_t count);

// ---- the sets behind it, for tests and benchmarks

/// `WriteRandomBytes` is the routine.
using TRandomSet = TKernelSet<std::uint32_t (*)(std::uint32_t state, std::uint8_t* bytes, std::size_t count)>;

TKernelSets<TRandomSet> GetRandomSets();

/// The set that `WriteRandomBytes` calls, chosen when the library is loaded.
extern const TRandomSet* randomKernels;

extern const TRandomSet kScalarRandom;
/// Only in builds for x86.
extern const TRandomSet kSse2Random;

} // namespace vorlund
