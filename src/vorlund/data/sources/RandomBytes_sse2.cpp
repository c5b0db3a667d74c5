// One state after the other, each byte waits for a multiplication. But n steps at once are a step of the same
// form, with another factor and increment: so sixteen neighbouring states advance by sixteen steps
// each, and none waits for another. F. B. Brown, "Random Number Generation with Arbitrary Strides",
// Transactions of the American Nuclear Society 71 (1994).
#include "vorlund/data/sources/RandomBytes.h"

#include <emmintrin.h>
#include <utility>

namespace vorlund {
namespace {

constexpr std::size_t kLanes = 16;
constexpr std::size_t kRegisters = kLanes / 2;

/// The step that is `kLanes` steps.
struct TStride {
    std::uint32_t multiplier = 1;
    std::uint32_t increment = 0;
};
constexpr TStride kStride = [] {
    TStride stride;
    for (std::size_t i = 0; i < kLanes; ++i) {
        stride.multiplier *= kRandomMultiplier;
        stride.increment = NextRandomState(stride.increment);
    }
    return stride;
}();

/// Two states, each in the lower half of 64 bits; the upper halves do not matter.
__m128i Advance(__m128i states) {
    return _mm_add_epi64(_mm_mul_epu32(states, _mm_set1_epi64x(kStride.multiplier)),
                         _mm_set1_epi64x(kStride.increment));
}

/// Written out, not looped over, so that all states stay in registers.
template <std::size_t... i>
VRL_INLINE void AdvanceAll(__m128i (&states)[kRegisters], std::index_sequence<i...>) {
    ((states[i] = Advance(states[i])), ...);
}

/// The bytes of four states, each in 32 bits.
__m128i BytesOf(__m128i first, __m128i second) {
    const __m128i states = _mm_castps_si128(
        _mm_shuffle_ps(_mm_castsi128_ps(first), _mm_castsi128_ps(second), _MM_SHUFFLE(2, 0, 2, 0)));
    return _mm_and_si128(_mm_srli_epi32(states, 16), _mm_set1_epi32(0xFF));
}

/// Writes `blocks` blocks of `kLanes` bytes, at least one; returns the last state.
std::uint32_t WriteBlocks(std::uint32_t state, std::uint8_t* bytes, std::size_t blocks) {
    __m128i states[kRegisters];
    for (__m128i& pair : states) {
        const std::uint32_t first = NextRandomState(state);
        state = NextRandomState(first);
        pair = _mm_set_epi32(0, static_cast<int>(state), 0, static_cast<int>(first));
    }
    for (;;) {
        const __m128i low = _mm_packs_epi32(BytesOf(states[0], states[1]), BytesOf(states[2], states[3]));
        const __m128i high = _mm_packs_epi32(BytesOf(states[4], states[5]), BytesOf(states[6], states[7]));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), _mm_packus_epi16(low, high));
        if (--blocks == 0) break;
        bytes += kLanes;
        AdvanceAll(states, std::make_index_sequence<kRegisters>());
    }
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_unpackhi_epi64(states[7], states[7])));
}

std::uint32_t WriteBytes(std::uint32_t state, std::uint8_t* bytes, std::size_t count) {
    const std::size_t blocks = count / kLanes;
    if (blocks > 0) state = WriteBlocks(state, bytes, blocks);
    const std::size_t done = blocks * kLanes;
    return kScalarRandom.routines(state, bytes + done, count - done);
}

} // namespace

constinit const TRandomSet kSse2Random{"sse2", [] { return true; }, WriteBytes};

} // namespace vorlund
