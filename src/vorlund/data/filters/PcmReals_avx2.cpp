// Real numbers for AVX2. The whole file is compiled for these processors, so it shares no inline function
// with other files: the linker could take this copy for all of them.
#include "vorlund/data/filters/PcmReals.h"

#include <immintrin.h>

namespace vorlund::pcm {
namespace {

constexpr std::size_t kLane = 16;
constexpr std::size_t kVector = 2 * kLane;

VRL_INLINE __m128i LoadLane(const std::byte* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
VRL_INLINE void Store(std::byte* to, __m256d value) {
    _mm256_storeu_pd(reinterpret_cast<double*>(to), value);
}
/// Eight integers, divided by 2^`bits`.
template <int bits> VRL_INLINE void StoreEight(std::byte* to, __m256i integers) {
    const __m256d scale = _mm256_set1_pd(1.0 / (1u << bits));
    Store(to, _mm256_mul_pd(_mm256_cvtepi32_pd(_mm256_castsi256_si128(integers)), scale));
    Store(to + kVector, _mm256_mul_pd(_mm256_cvtepi32_pd(_mm256_extracti128_si256(integers, 1)), scale));
}

struct T8 : TBlockSizes<16, 1, 8> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i samples = LoadLane(from);
        const __m256i zero = _mm256_set1_epi32(128);
        StoreEight<7>(to, _mm256_sub_epi32(_mm256_cvtepu8_epi32(samples), zero));
        StoreEight<7>(to + 2 * kVector,
                      _mm256_sub_epi32(_mm256_cvtepu8_epi32(_mm_unpackhi_epi64(samples, samples)), zero));
    }
};

struct T16 : TBlockSizes<16, 2, 8> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        StoreEight<15>(to, _mm256_cvtepi16_epi32(LoadLane(from)));
        StoreEight<15>(to + 2 * kVector, _mm256_cvtepi16_epi32(LoadLane(from + kLane)));
    }
};

struct T32 : TBlockSizes<8, 4, 8> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        StoreEight<31>(to, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)));
    }
};

struct TFloat : TBlockSizes<8, 4, 8> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        Store(to, _mm256_cvtps_pd(_mm_castsi128_ps(LoadLane(from))));
        Store(to + kVector, _mm256_cvtps_pd(_mm_castsi128_ps(LoadLane(from + kLane))));
    }
};

/// What is shorter than a block is left to the set before this one.
template <class TBlock, std::size_t from>
constexpr TRoutine kReals = ConvertBlocks<TBlock, kSse2Reals, 0, from>;

} // namespace

constinit const TRealsSet kAvx2Reals{
    "avx2", [] { return HasAvx2(); }, {{kReals<T8, 0>, kReals<T16, 1>, kReals<T32, 2>, kReals<TFloat, 3>}}};

} // namespace vorlund::pcm
