// Conversions for AVX2 with fused multiply-add. The whole file is compiled for these processors, so it shares
// no inline function with other files: the linker could take this copy for all of them.
//
// Scales that are powers of two are exact in single precision. The others would need the digits of a double,
// but not with the products rounded toward zero: what such a product loses lies below its last digit, so
// below 2^24 truncating it gives what truncating the exact product does. (Rounded to nearest it might reach
// the next integer.) For 32 bits products are larger; what they lose is itself a float, which a fused
// multiply-add gives, and adds its own integer part. For 8 bits a fused multiply-add rounds (s + 1.0) * 127.5
// once, which for no float makes a difference behind the truncation. All of that holds for samples below 2;
// blocks with others, infinities or NaN take the way through double precision.
#include "vorlund/data/filters/PcmConversions.h"

#include <immintrin.h>

namespace vorlund::pcm {
namespace {

constexpr std::size_t kLane = 16;
constexpr std::size_t kVector = 2 * kLane;

VRL_INLINE __m128i LoadLane(const std::byte* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
VRL_INLINE __m256i Load(const std::byte* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}
VRL_INLINE void Store(std::byte* to, __m256i value) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), value);
}
/// What 8-bit samples and signed ones differ by.
VRL_INLINE __m256i FlipSign8(__m256i samples) {
    return _mm256_xor_si256(samples, _mm256_set1_epi8(-128));
}
/// Eight integers as floats, divided by 2^`bits`. The conversion rounds to nearest once, as that of a double
/// does.
template <int bits> VRL_INLINE __m256i ToFloat(__m256i samples) {
    const __m256 scale = _mm256_set1_ps(1.0f / (1u << bits));
    return _mm256_castps_si256(_mm256_mul_ps(_mm256_cvtepi32_ps(samples), scale));
}
/// Packs 32-bit integers of 0..65535 and puts the lanes in order.
VRL_INLINE __m256i Pack32(__m256i low, __m256i high) {
    return _mm256_permute4x64_epi64(_mm256_packus_epi32(low, high), _MM_SHUFFLE(3, 1, 2, 0));
}
/// Packs 32-bit integers of 0..255 and puts the lanes in order.
VRL_INLINE __m256i Pack32(__m256i a, __m256i b, __m256i c, __m256i d) {
    const __m256i packed = _mm256_packus_epi16(_mm256_packus_epi32(a, b), _mm256_packus_epi32(c, d));
    return _mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}

struct T8To16 : TBlockSizes<32, 1, 2> {
    VRL_INLINE static __m256i Widen(const std::byte* from) {
        const __m256i samples = _mm256_slli_epi16(_mm256_cvtepu8_epi16(LoadLane(from)), 8);
        return _mm256_xor_si256(samples, _mm256_set1_epi16(-32768));
    }
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        Store(to, Widen(from));
        Store(to + kVector, Widen(from + kLane));
    }
};

template <bool toFloat> struct T8To32 : TBlockSizes<32, 1, 4> {
    VRL_INLINE static __m256i Finish(__m256i samples) {
        if constexpr (toFloat) return ToFloat<31>(samples);
        return samples;
    }
    VRL_INLINE static void ConvertHalf(std::byte* to, const std::byte* from) {
        // A byte goes to the top of its four; -1 gives zero.
        const __m256i first = _mm256_setr_epi8(-1, -1, -1, 0, -1, -1, -1, 1, -1, -1, -1, 2, -1, -1, -1, 3, //
                                               -1, -1, -1, 4, -1, -1, -1, 5, -1, -1, -1, 6, -1, -1, -1, 7);
        const __m256i second =
            _mm256_setr_epi8(-1, -1, -1, 8, -1, -1, -1, 9, -1, -1, -1, 10, -1, -1, -1, 11, //
                             -1, -1, -1, 12, -1, -1, -1, 13, -1, -1, -1, 14, -1, -1, -1, 15);
        const __m256i samples = FlipSign8(_mm256_broadcastsi128_si256(LoadLane(from)));
        Store(to, Finish(_mm256_shuffle_epi8(samples, first)));
        Store(to + kVector, Finish(_mm256_shuffle_epi8(samples, second)));
    }
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        ConvertHalf(to, from);
        ConvertHalf(to + 2 * kVector, from + kLane);
    }
};

struct T16To8 : TBlockSizes<32, 2, 1> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m256i low = _mm256_srli_epi16(Load(from), 8);
        const __m256i high = _mm256_srli_epi16(Load(from + kVector), 8);
        const __m256i packed =
            _mm256_permute4x64_epi64(_mm256_packus_epi16(low, high), _MM_SHUFFLE(3, 1, 2, 0));
        Store(to, FlipSign8(packed));
    }
};

template <bool toFloat> struct T16To32 : TBlockSizes<16, 2, 4> {
    VRL_INLINE static __m256i Widen(const std::byte* from) {
        const __m256i samples = _mm256_cvtepi16_epi32(LoadLane(from));
        if constexpr (toFloat) return ToFloat<15>(samples);
        return _mm256_slli_epi32(samples, 16);
    }
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        Store(to, Widen(from));
        Store(to + kVector, Widen(from + kLane));
    }
};

struct T32To8 : TBlockSizes<32, 4, 1> {
    VRL_INLINE static __m256i TopByte(const std::byte* from) { return _mm256_srli_epi32(Load(from), 24); }
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        Store(to, FlipSign8(Pack32(TopByte(from), TopByte(from + kVector), TopByte(from + 2 * kVector),
                                   TopByte(from + 3 * kVector))));
    }
};

struct T32To16 : TBlockSizes<16, 4, 2> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        Store(to, Pack32(_mm256_srli_epi32(Load(from), 16), _mm256_srli_epi32(Load(from + kVector), 16)));
    }
};

struct T32ToFloat : TBlockSizes<16, 4, 4> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        Store(to, ToFloat<31>(Load(from)));
        Store(to + kVector, ToFloat<31>(Load(from + kVector)));
    }
};

/// Four floats as 32-bit integers in the scale of `sampleBits`, through double precision; -2^31 where they do
/// not fit.
template <int sampleBits> VRL_INLINE __m128i FromFloat(const std::byte* from) {
    __m256d samples = _mm256_cvtps_pd(_mm_loadu_ps(reinterpret_cast<const float*>(from)));
    if constexpr (sampleBits == 8) {
        samples = _mm256_mul_pd(_mm256_add_pd(samples, _mm256_set1_pd(1.0)), _mm256_set1_pd(127.5));
    } else {
        constexpr double kScale = sampleBits == 16 ? 32767.0 : 214743648.0;
        samples = _mm256_mul_pd(samples, _mm256_set1_pd(kScale));
    }
    return _mm256_cvttpd_epi32(samples);
}
template <int sampleBits> struct TExact {
    VRL_INLINE __m256i operator()(const std::byte* from) const {
        return _mm256_setr_m128i(FromFloat<sampleBits>(from), FromFloat<sampleBits>(from + kLane));
    }
};

/// The same in single precision while it rounds toward zero, for samples below 2.
template <int sampleBits> struct TTowardZero {
    VRL_INLINE __m256i operator()(const std::byte* from) const {
        const __m256 samples = _mm256_loadu_ps(reinterpret_cast<const float*>(from));
        if constexpr (sampleBits == 8) {
            const __m256 scale = _mm256_set1_ps(127.5f);
            return _mm256_cvttps_epi32(_mm256_fmadd_ps(samples, scale, scale));
        } else if constexpr (sampleBits == 16) {
            return _mm256_cvttps_epi32(_mm256_mul_ps(samples, _mm256_set1_ps(32767.0f)));
        } else {
            const __m256 scale = _mm256_set1_ps(214743648.0f);
            const __m256 product = _mm256_mul_ps(samples, scale);
            const __m256 rest = _mm256_fmsub_ps(samples, scale, product);
            return _mm256_add_epi32(_mm256_cvttps_epi32(product), _mm256_cvttps_epi32(rest));
        }
    }
};
static_assert(214743648.0f == 214743648.0);

/// While this lives, single precision rounds toward zero.
class CRoundTowardZero {
public:
    VRL_INLINE CRoundTowardZero() : before_(_mm_getcsr()) { Set(before_ | _MM_ROUND_TOWARD_ZERO); }
    CRoundTowardZero(const CRoundTowardZero&) = delete;
    CRoundTowardZero& operator=(const CRoundTowardZero&) = delete;
    VRL_INLINE ~CRoundTowardZero() { Set(before_); }

private:
    /// The compiler does not know what arithmetic depends on this; that it moves no load and no store across
    /// keeps what lies between a load and a store in its place.
    VRL_INLINE static void Set(unsigned int state) {
        asm volatile("" ::: "memory");
        _mm_setcsr(state);
        asm volatile("" ::: "memory");
    }
    unsigned int before_;
};

/// A rule for floats: blocks of four vectors, which `TStore::Store(to, from, scale)` scales and packs.
template <class TStore, int sampleBits> struct TFloatRule : TBlockSizes<32, 4, sampleBits / 8> {
    using TMode = CRoundTowardZero;
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        // The top bit of the exponent is set from 2 on, in infinities and in NaN.
        const __m256i all = _mm256_or_si256(_mm256_or_si256(Load(from), Load(from + kVector)),
                                            _mm256_or_si256(Load(from + 2 * kVector), //
                                                            Load(from + 3 * kVector)));
        if (_mm256_testz_si256(all, _mm256_set1_epi32(0x40000000))) {
            TStore::Store(to, from, TTowardZero<sampleBits>());
        } else {
            TStore::Store(to, from, TExact<sampleBits>());
        }
    }
};

struct TFloatTo8 : TFloatRule<TFloatTo8, 8> {
    template <class TScale> VRL_INLINE static void Store(std::byte* to, const std::byte* from, TScale scale) {
        const __m256i lowByte = _mm256_set1_epi32(0xFF);
        pcm::Store(to, Pack32(_mm256_and_si256(scale(from), lowByte),
                              _mm256_and_si256(scale(from + kVector), lowByte),
                              _mm256_and_si256(scale(from + 2 * kVector), lowByte),
                              _mm256_and_si256(scale(from + 3 * kVector), lowByte)));
    }
};

struct TFloatTo16 : TFloatRule<TFloatTo16, 16> {
    template <class TScale> VRL_INLINE static void Store(std::byte* to, const std::byte* from, TScale scale) {
        const __m256i lowHalf = _mm256_set1_epi32(0xFFFF);
        pcm::Store(to, Pack32(_mm256_and_si256(scale(from), lowHalf),
                              _mm256_and_si256(scale(from + kVector), lowHalf)));
        pcm::Store(to + kVector, Pack32(_mm256_and_si256(scale(from + 2 * kVector), lowHalf),
                                        _mm256_and_si256(scale(from + 3 * kVector), lowHalf)));
    }
};

struct TFloatTo32 : TFloatRule<TFloatTo32, 32> {
    template <class TScale> VRL_INLINE static void Store(std::byte* to, const std::byte* from, TScale scale) {
        pcm::Store(to, scale(from));
        pcm::Store(to + kVector, scale(from + kVector));
        pcm::Store(to + 2 * kVector, scale(from + 2 * kVector));
        pcm::Store(to + 3 * kVector, scale(from + 3 * kVector));
    }
};

/// What is shorter than a block is left to the set before this one.
template <class TBlock, std::size_t from, std::size_t to>
constexpr TRoutine kConvert = ConvertBlocks<TBlock, kSse2Conversions, from, to>;

} // namespace

constinit const TConversionSet kAvx2Conversions{
    "avx2",
    [] { return HasAvx2(); },
    {{nullptr, kConvert<T8To16, 0, 1>, kConvert<T8To32<false>, 0, 2>, kConvert<T8To32<true>, 0, 3>},
     {kConvert<T16To8, 1, 0>, nullptr, kConvert<T16To32<false>, 1, 2>, kConvert<T16To32<true>, 1, 3>},
     {kConvert<T32To8, 2, 0>, kConvert<T32To16, 2, 1>, nullptr, kConvert<T32ToFloat, 2, 3>},
     {kConvert<TFloatTo8, 3, 0>, kConvert<TFloatTo16, 3, 1>, kConvert<TFloatTo32, 3, 2>, nullptr}}};

} // namespace vorlund::pcm
