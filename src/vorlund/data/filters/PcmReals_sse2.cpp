// Real numbers for SSE2.
#include "vorlund/data/filters/PcmReals.h"

#include <emmintrin.h>

namespace vorlund::pcm {
namespace {

constexpr std::size_t kVector = 16;

VRL_INLINE __m128i Load(const std::byte* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
VRL_INLINE void Store(std::byte* to, __m128d value) {
    _mm_storeu_pd(reinterpret_cast<double*>(to), value);
}
/// Four integers, divided by 2^`bits`.
template <int bits> VRL_INLINE void StoreFour(std::byte* to, __m128i integers) {
    const __m128d scale = _mm_set1_pd(1.0 / (1u << bits));
    Store(to, _mm_mul_pd(_mm_cvtepi32_pd(integers), scale));
    Store(to + kVector, _mm_mul_pd(_mm_cvtepi32_pd(_mm_unpackhi_epi64(integers, integers)), scale));
}
/// Eight integers of 16 bits.
template <int bits> VRL_INLINE void StoreEight(std::byte* to, __m128i integers) {
    StoreFour<bits>(to, _mm_srai_epi32(_mm_unpacklo_epi16(integers, integers), 16));
    StoreFour<bits>(to + 2 * kVector, _mm_srai_epi32(_mm_unpackhi_epi16(integers, integers), 16));
}

struct T8 : TBlockSizes<16, 1, 8> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i samples = Load(from);
        const __m128i zero = _mm_set1_epi16(128);
        const __m128i none = _mm_setzero_si128();
        StoreEight<7>(to, _mm_sub_epi16(_mm_unpacklo_epi8(samples, none), zero));
        StoreEight<7>(to + 4 * kVector, _mm_sub_epi16(_mm_unpackhi_epi8(samples, none), zero));
    }
};

struct T16 : TBlockSizes<8, 2, 8> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) { StoreEight<15>(to, Load(from)); }
};

struct T32 : TBlockSizes<4, 4, 8> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) { StoreFour<31>(to, Load(from)); }
};

struct TFloat : TBlockSizes<4, 4, 8> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128 samples = _mm_castsi128_ps(Load(from));
        Store(to, _mm_cvtps_pd(samples));
        Store(to + kVector, _mm_cvtps_pd(_mm_movehl_ps(samples, samples)));
    }
};

/// What is shorter than a block is left to the set before this one.
template <class TBlock, std::size_t from>
constexpr TRoutine kReals = ConvertBlocks<TBlock, kScalarReals, 0, from>;

} // namespace

constinit const TRealsSet kSse2Reals{
    "sse2", [] { return true; }, {{kReals<T8, 0>, kReals<T16, 1>, kReals<T32, 2>, kReals<TFloat, 3>}}};

} // namespace vorlund::pcm
