// Conversions for SSE2, which every x86 processor that the library runs on has.
//
// Scales that are powers of two are exact in single precision. The others need more digits than a float has:
// they go through double precision, four samples at a time.
#include "vorlund/data/filters/PcmConversions.h"

#include <emmintrin.h>

namespace vorlund::pcm {
namespace {

constexpr std::size_t kVector = 16;

VRL_INLINE __m128i Load(const std::byte* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
VRL_INLINE void Store(std::byte* to, __m128i value) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), value);
}
/// What 8-bit samples and signed ones differ by.
VRL_INLINE __m128i FlipSign8(__m128i samples) {
    return _mm_xor_si128(samples, _mm_set1_epi8(-128));
}
/// The samples above as many zeros.
VRL_INLINE __m128i WidenLow8(__m128i samples) {
    return _mm_unpacklo_epi8(_mm_setzero_si128(), samples);
}
VRL_INLINE __m128i WidenHigh8(__m128i samples) {
    return _mm_unpackhi_epi8(_mm_setzero_si128(), samples);
}
VRL_INLINE __m128i WidenLow16(__m128i samples) {
    return _mm_unpacklo_epi16(_mm_setzero_si128(), samples);
}
VRL_INLINE __m128i WidenHigh16(__m128i samples) {
    return _mm_unpackhi_epi16(_mm_setzero_si128(), samples);
}
/// Four 32-bit samples as floats. The conversion rounds to nearest once, as that of a double does.
VRL_INLINE __m128i ToFloat(__m128i samples) {
    return _mm_castps_si128(_mm_mul_ps(_mm_cvtepi32_ps(samples), _mm_set1_ps(0x1p-31f)));
}
template <int sampleBits> VRL_INLINE __m128i Scale(__m128d samples) {
    if constexpr (sampleBits == 8) {
        samples = _mm_mul_pd(_mm_add_pd(samples, _mm_set1_pd(1.0)), _mm_set1_pd(127.5));
    } else {
        constexpr double kScale = sampleBits == 16 ? 32767.0 : 214743648.0;
        samples = _mm_mul_pd(samples, _mm_set1_pd(kScale));
    }
    // Gives -2^31 for what does not fit.
    return _mm_cvttpd_epi32(samples);
}
/// Four floats as 32-bit integers in the scale of `sampleBits`.
template <int sampleBits> VRL_INLINE __m128i FromFloat(const std::byte* from) {
    const __m128 samples = _mm_castsi128_ps(Load(from));
    return _mm_unpacklo_epi64(Scale<sampleBits>(_mm_cvtps_pd(samples)),
                              Scale<sampleBits>(_mm_cvtps_pd(_mm_movehl_ps(samples, samples))));
}

struct T8To16 : TBlockSizes<16, 1, 2> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i samples = FlipSign8(Load(from));
        Store(to, WidenLow8(samples));
        Store(to + kVector, WidenHigh8(samples));
    }
};

template <bool toFloat> struct T8To32 : TBlockSizes<16, 1, 4> {
    VRL_INLINE static __m128i Finish(__m128i samples) {
        if constexpr (toFloat) return ToFloat(samples);
        return samples;
    }
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i samples = FlipSign8(Load(from));
        const __m128i low = WidenLow8(samples);
        const __m128i high = WidenHigh8(samples);
        Store(to, Finish(WidenLow16(low)));
        Store(to + kVector, Finish(WidenHigh16(low)));
        Store(to + 2 * kVector, Finish(WidenLow16(high)));
        Store(to + 3 * kVector, Finish(WidenHigh16(high)));
    }
};

struct T16To8 : TBlockSizes<16, 2, 1> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i low = _mm_srli_epi16(Load(from), 8);
        const __m128i high = _mm_srli_epi16(Load(from + kVector), 8);
        Store(to, FlipSign8(_mm_packus_epi16(low, high)));
    }
};

template <bool toFloat> struct T16To32 : TBlockSizes<8, 2, 4> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i samples = Load(from);
        const __m128i low = WidenLow16(samples);
        const __m128i high = WidenHigh16(samples);
        Store(to, toFloat ? ToFloat(low) : low);
        Store(to + kVector, toFloat ? ToFloat(high) : high);
    }
};

struct T32To8 : TBlockSizes<16, 4, 1> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i a = _mm_srli_epi32(Load(from), 24);
        const __m128i b = _mm_srli_epi32(Load(from + kVector), 24);
        const __m128i c = _mm_srli_epi32(Load(from + 2 * kVector), 24);
        const __m128i d = _mm_srli_epi32(Load(from + 3 * kVector), 24);
        Store(to, FlipSign8(_mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d))));
    }
};

struct T32To16 : TBlockSizes<8, 4, 2> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i low = _mm_srai_epi32(Load(from), 16);
        const __m128i high = _mm_srai_epi32(Load(from + kVector), 16);
        Store(to, _mm_packs_epi32(low, high));
    }
};

struct T32ToFloat : TBlockSizes<8, 4, 4> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        Store(to, ToFloat(Load(from)));
        Store(to + kVector, ToFloat(Load(from + kVector)));
    }
};

struct TFloatTo8 : TBlockSizes<16, 4, 1> {
    VRL_INLINE static __m128i LowByte(const std::byte* from) {
        return _mm_and_si128(FromFloat<8>(from), _mm_set1_epi32(0xFF));
    }
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i low = _mm_packs_epi32(LowByte(from), LowByte(from + kVector));
        const __m128i high = _mm_packs_epi32(LowByte(from + 2 * kVector), LowByte(from + 3 * kVector));
        Store(to, _mm_packus_epi16(low, high));
    }
};

struct TFloatTo16 : TBlockSizes<8, 4, 2> {
    /// The low half with its sign, so that the packing finds nothing to clip.
    VRL_INLINE static __m128i LowHalf(const std::byte* from) {
        return _mm_srai_epi32(_mm_slli_epi32(FromFloat<16>(from), 16), 16);
    }
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        Store(to, _mm_packs_epi32(LowHalf(from), LowHalf(from + kVector)));
    }
};

struct TFloatTo32 : TBlockSizes<8, 4, 4> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        Store(to, FromFloat<32>(from));
        Store(to + kVector, FromFloat<32>(from + kVector));
    }
};

template <class TBlock, std::size_t from, std::size_t to>
constexpr TRoutine kConvert = ConvertBlocks<TBlock, kScalarConversions, from, to>;

} // namespace

constinit const TConversionSet kSse2Conversions{
    "sse2",
    [] { return true; },
    {{nullptr, kConvert<T8To16, 0, 1>, kConvert<T8To32<false>, 0, 2>, kConvert<T8To32<true>, 0, 3>},
     {kConvert<T16To8, 1, 0>, nullptr, kConvert<T16To32<false>, 1, 2>, kConvert<T16To32<true>, 1, 3>},
     {kConvert<T32To8, 2, 0>, kConvert<T32To16, 2, 1>, nullptr, kConvert<T32ToFloat, 2, 3>},
     {kConvert<TFloatTo8, 3, 0>, kConvert<TFloatTo16, 3, 1>, kConvert<TFloatTo32, 3, 2>, nullptr}}};

} // namespace vorlund::pcm
