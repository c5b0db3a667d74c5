// Mixes for SSE2, where they beat the plain loops. The arithmetic is explained in PcmMixes_avx2.cpp.
#include "vorlund/data/filters/PcmMixes.h"

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
VRL_INLINE __m128 AsFloat(__m128i value) {
    return _mm_castsi128_ps(value);
}
VRL_INLINE __m128i AsInteger(__m128 value) {
    return _mm_castps_si128(value);
}

/// Four elements of 32 bits: the first two by index from `left`, the others from `right`.
template <int a, int b, int c, int d> VRL_INLINE __m128i Shuffle(__m128i left, __m128i right) {
    return AsInteger(_mm_shuffle_ps(AsFloat(left), AsFloat(right), _MM_SHUFFLE(d, c, b, a)));
}

// ---- to more channels

template <std::size_t size> struct TMonoToStereo : TBlockSizes<kVector / size, size, 2 * size> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i in = Load(from);
        if constexpr (size == 1) {
            Store(to, _mm_unpacklo_epi8(in, in));
            Store(to + kVector, _mm_unpackhi_epi8(in, in));
        } else if constexpr (size == 2) {
            Store(to, _mm_unpacklo_epi16(in, in));
            Store(to + kVector, _mm_unpackhi_epi16(in, in));
        } else {
            Store(to, _mm_unpacklo_epi32(in, in));
            Store(to + kVector, _mm_unpackhi_epi32(in, in));
        }
    }
};

struct TWideMonoToSix : TBlockSizes<4, 4, 24> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i in = Load(from);
        Store(to, Shuffle<0, 0, 0, 0>(in, in));
        Store(to + kVector, Shuffle<0, 0, 1, 1>(in, in));
        Store(to + 2 * kVector, Shuffle<1, 1, 1, 1>(in, in));
        Store(to + 3 * kVector, Shuffle<2, 2, 2, 2>(in, in));
        Store(to + 4 * kVector, Shuffle<2, 2, 3, 3>(in, in));
        Store(to + 5 * kVector, Shuffle<3, 3, 3, 3>(in, in));
    }
};

struct TWideStereoToSix : TBlockSizes<2, 8, 24> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i in = Load(from);
        const __m128i zero = _mm_setzero_si128();
        Store(to, _mm_unpacklo_epi64(in, zero));
        Store(to + kVector, _mm_unpackhi_epi64(zero, in));
        Store(to + 2 * kVector, zero);
    }
};

// ---- integers to fewer channels

/// Every sample divided by 2 or 4, as the rules divide; `size` is that of a sample.
template <std::size_t size, int divisor> VRL_INLINE __m128i Divide(__m128i samples) {
    constexpr int kShift = divisor == 2 ? 1 : 2;
    if constexpr (size == 1) {
        return _mm_and_si128(_mm_srli_epi16(samples, kShift), _mm_set1_epi8(0xFF >> kShift));
    } else if constexpr (size == 2) {
        const __m128i bias = _mm_srli_epi16(_mm_srai_epi16(samples, 15), 16 - kShift);
        return _mm_srai_epi16(_mm_add_epi16(samples, bias), kShift);
    } else {
        const __m128i bias = _mm_srli_epi32(_mm_srai_epi32(samples, 31), 32 - kShift);
        return _mm_srai_epi32(_mm_add_epi32(samples, bias), kShift);
    }
}

/// The even and the odd bytes as 16-bit numbers.
VRL_INLINE __m128i EvenBytes(__m128i bytes) {
    return _mm_and_si128(bytes, _mm_set1_epi16(0xFF));
}
VRL_INLINE __m128i OddBytes(__m128i bytes) {
    return _mm_srli_epi16(bytes, 8);
}

VRL_INLINE __m128i AddNeighbours16(__m128i samples) {
    return _mm_madd_epi16(samples, _mm_set1_epi16(1));
}

template <std::size_t size> struct TStereoToMono : TBlockSizes<kVector / size, 2 * size, size> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i low = Divide<size, 2>(Load(from));
        const __m128i high = Divide<size, 2>(Load(from + kVector));
        if constexpr (size == 1) {
            Store(to, _mm_packus_epi16(_mm_add_epi16(EvenBytes(low), OddBytes(low)),
                                       _mm_add_epi16(EvenBytes(high), OddBytes(high))));
        } else if constexpr (size == 2) {
            Store(to, _mm_packs_epi32(AddNeighbours16(low), AddNeighbours16(high)));
        } else {
            Store(to, _mm_add_epi32(Shuffle<0, 2, 0, 2>(low, high), Shuffle<1, 3, 1, 3>(low, high)));
        }
    }
};

/// The pairs of 6-channel frames, each kind in a vector of its own.
struct TPairs {
    __m128i front, middle, rear;

    /// From three vectors of four frames with pairs of 32 bits.
    VRL_INLINE static TPairs Of32(__m128i a, __m128i b, __m128i c) {
        return {Shuffle<0, 3, 0, 2>(a, Shuffle<2, 2, 1, 1>(b, c)),
                Shuffle<0, 2, 0, 2>(Shuffle<1, 1, 0, 0>(a, b), Shuffle<3, 3, 2, 2>(b, c)),
                Shuffle<0, 2, 0, 3>(Shuffle<2, 2, 1, 1>(a, b), c)};
    }
    /// From three vectors of two frames with pairs of 64 bits.
    VRL_INLINE static TPairs Of64(__m128i a, __m128i b, __m128i c) {
        return {Shuffle<0, 1, 2, 3>(a, b), Shuffle<2, 3, 0, 1>(a, c), Shuffle<0, 1, 2, 3>(b, c)};
    }

    VRL_INLINE __m128i Add32() const { return _mm_add_epi32(_mm_add_epi32(front, middle), rear); }
    /// Front and rear, and both of the middle on either side.
    VRL_INLINE __m128i ToStereo16() const {
        const __m128i swapped = _mm_shufflehi_epi16(_mm_shufflelo_epi16(middle, _MM_SHUFFLE(2, 3, 0, 1)),
                                                    _MM_SHUFFLE(2, 3, 0, 1));
        return _mm_add_epi16(_mm_add_epi16(front, rear), _mm_add_epi16(middle, swapped));
    }
    VRL_INLINE __m128i ToStereo32() const {
        const __m128i swapped = _mm_shuffle_epi32(middle, _MM_SHUFFLE(2, 3, 0, 1));
        return _mm_add_epi32(_mm_add_epi32(front, rear), _mm_add_epi32(middle, swapped));
    }
};

/// 16-bit numbers as 32-bit ones, bytes as 16-bit ones: all are positive.
VRL_INLINE __m128i WidenLow16(__m128i numbers) {
    return _mm_unpacklo_epi16(numbers, _mm_setzero_si128());
}
VRL_INLINE __m128i WidenHigh16(__m128i numbers) {
    return _mm_unpackhi_epi16(numbers, _mm_setzero_si128());
}
VRL_INLINE __m128i WidenLow8(__m128i bytes) {
    return _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
}
VRL_INLINE __m128i WidenHigh8(__m128i bytes) {
    return _mm_unpackhi_epi8(bytes, _mm_setzero_si128());
}

struct TSixToMono8 : TBlockSizes<8, 6, 1> {
    VRL_INLINE static __m128i AddSixths(__m128i bytes) {
        const __m128i sixth = _mm_set1_epi16(10923);
        return _mm_add_epi16(_mm_mulhi_epu16(EvenBytes(bytes), sixth),
                             _mm_mulhi_epu16(OddBytes(bytes), sixth));
    }
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i a = AddSixths(Load(from));
        const __m128i b = AddSixths(Load(from + kVector));
        const __m128i c = AddSixths(Load(from + 2 * kVector));
        const __m128i low = TPairs::Of32(WidenLow16(a), WidenHigh16(a), WidenLow16(b)).Add32();
        const __m128i high = TPairs::Of32(WidenHigh16(b), WidenLow16(c), WidenHigh16(c)).Add32();
        const __m128i sums = _mm_packs_epi32(low, high);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(sums, sums));
    }
};

struct TSixToMono16 : TBlockSizes<8, 12, 2> {
    VRL_INLINE static __m128i AddSixths(const std::byte* from) {
        const __m128i samples = Load(from);
        const __m128i floor = _mm_mulhi_epi16(samples, _mm_set1_epi16(10923));
        return AddNeighbours16(_mm_add_epi16(floor, _mm_srli_epi16(samples, 15)));
    }
    VRL_INLINE static __m128i AddFour(const std::byte* from) {
        return TPairs::Of32(AddSixths(from), AddSixths(from + kVector), AddSixths(from + 2 * kVector))
            .Add32();
    }
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        Store(to, _mm_packs_epi32(AddFour(from), AddFour(from + 3 * kVector)));
    }
};

template <std::size_t size> struct TSixToStereo : TBlockSizes<8 / size, 6 * size, 2 * size> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128i a = Divide<size, 4>(Load(from));
        const __m128i b = Divide<size, 4>(Load(from + kVector));
        const __m128i c = Divide<size, 4>(Load(from + 2 * kVector));
        if constexpr (size == 1) {
            const __m128i low = TPairs::Of32(WidenLow8(a), WidenHigh8(a), WidenLow8(b)).ToStereo16();
            const __m128i high = TPairs::Of32(WidenHigh8(b), WidenLow8(c), WidenHigh8(c)).ToStereo16();
            Store(to, _mm_packus_epi16(low, high));
        } else if constexpr (size == 2) {
            Store(to, TPairs::Of32(a, b, c).ToStereo16());
        } else {
            Store(to, TPairs::Of64(a, b, c).ToStereo32());
        }
    }
};

// ---- floats to fewer channels

struct TFloatStereoToMono : TBlockSizes<4, 8, 4> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128 half = _mm_set1_ps(0.5F);
        const __m128i low = Load(from);
        const __m128i high = Load(from + kVector);
        const __m128 left = AsFloat(Shuffle<0, 2, 0, 2>(low, high));
        const __m128 right = AsFloat(Shuffle<1, 3, 1, 3>(low, high));
        const __m128 sum = _mm_add_ps(left, right);
        __m128 result = _mm_mul_ps(sum, half);
        // An infinity times 0 is not a number.
        const __m128 zero = _mm_setzero_ps();
        const __m128 isBeyond = _mm_cmpunord_ps(_mm_mul_ps(sum, zero), zero);
        if (_mm_movemask_ps(isBeyond) != 0) [[unlikely]] {
            const __m128 halves = _mm_add_ps(_mm_mul_ps(left, half), _mm_mul_ps(right, half));
            result = _mm_or_ps(_mm_and_ps(isBeyond, halves), _mm_andnot_ps(isBeyond, result));
        }
        Store(to, AsInteger(result));
    }
};

/// Two neighbouring channels in double precision.
VRL_INLINE __m128d LoadTwo(const std::byte* from) {
    return _mm_cvtps_pd(AsFloat(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from))));
}

/// The correctly rounded quotient by 6 of a double that was a float. Here the first part of a sixth has so
/// few digits that its product with a float is exact.
VRL_INLINE __m128d DivideBySix(__m128d value) {
    const __m128d most = _mm_mul_pd(value, _mm_set1_pd(0x1.5555555p-3));
    return _mm_add_pd(most, _mm_mul_pd(value, _mm_set1_pd(0x1.5555555555555p-33)));
}

struct TFloatSixToMono : TBlockSizes<2, 24, 4> {
    static constexpr std::size_t kPair = 8;

    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        __m128d sum{};
        for (std::size_t pair = 0; pair < 3; ++pair) {
            const __m128d first = DivideBySix(LoadTwo(from + pair * kPair));
            const __m128d second = DivideBySix(LoadTwo(from + (3 + pair) * kPair));
            const __m128d even = _mm_unpacklo_pd(first, second);
            sum = pair == 0 ? even : _mm_add_pd(sum, even);
            sum = _mm_add_pd(sum, _mm_unpackhi_pd(first, second));
        }
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), AsInteger(_mm_cvtpd_ps(sum)));
    }
};

struct TFloatSixToStereo : TBlockSizes<1, 24, 8> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m128d middle = LoadTwo(from + 8);
        __m128d sum = _mm_add_pd(LoadTwo(from), _mm_unpacklo_pd(middle, middle));
        sum = _mm_add_pd(sum, _mm_unpackhi_pd(middle, middle));
        sum = _mm_add_pd(sum, LoadTwo(from + 16));
        const __m128 result = _mm_cvtpd_ps(_mm_mul_pd(sum, _mm_set1_pd(0.25)));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), AsInteger(result));
    }
};

template <class TBlock, std::size_t pair, std::size_t format>
constexpr TRoutine kMix = ConvertBlocks<TBlock, kScalarMixes, pair, format>;

} // namespace

constinit const TMixSet kSse2Mixes{
    "sse2",
    [] { return true; },
    {{kMix<TMonoToStereo<1>, 0, 0>, kMix<TMonoToStereo<2>, 0, 1>, kMix<TMonoToStereo<4>, 0, 2>,
      kMix<TMonoToStereo<4>, 0, 3>},
     {nullptr, nullptr, kMix<TWideMonoToSix, 1, 2>, kMix<TWideMonoToSix, 1, 3>},
     {kMix<TStereoToMono<1>, 2, 0>, kMix<TStereoToMono<2>, 2, 1>, kMix<TStereoToMono<4>, 2, 2>,
      kMix<TFloatStereoToMono, 2, 3>},
     {nullptr, nullptr, kMix<TWideStereoToSix, 3, 2>, kMix<TWideStereoToSix, 3, 3>},
     {kMix<TSixToMono8, 4, 0>, kMix<TSixToMono16, 4, 1>, nullptr, kMix<TFloatSixToMono, 4, 3>},
     {kMix<TSixToStereo<1>, 5, 0>, kMix<TSixToStereo<2>, 5, 1>, kMix<TSixToStereo<4>, 5, 2>,
      kMix<TFloatSixToStereo, 5, 3>}}};

} // namespace vorlund::pcm
