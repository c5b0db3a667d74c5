#include "vorlund/data/sources/RandomBytes.h"

namespace vorlund {
namespace {

constexpr const TRandomSet* kSets[] = {&kScalarRandom, VRL_X86_SETS(&kSse2Random)};

} // namespace

TKernelSets<TRandomSet> GetRandomSets() {
    return kSets;
}

// Usable from the first instruction on, and faster once this file is initialised.
constinit const TRandomSet* randomKernels = &kScalarRandom;

[[maybe_unused]] static const TRandomSet* const chosen = randomKernels = &FindFastestSet(GetRandomSets());

std::uint32_t WriteRandomBytes(std::uint32_t state, std::uint8_t* bytes, std::size_t count) {
    return randomKernels->routines(state, bytes, count);
}

} // namespace vorlund
