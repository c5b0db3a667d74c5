// Mixes for AVX2 with fused multiply-add. The whole file is compiled for these processors, so it shares no
// inline function with other files: the linker could take this copy for all of them.
//
// A vector has two lanes of 16 bytes that most instructions keep apart. Each lane works on a stretch of
// frames of its own, chosen so that the results come out in order.
#include "vorlund/data/filters/PcmMixes.h"

#include <immintrin.h>

namespace vorlund::pcm {
namespace {

constexpr std::size_t kLane = 16;
constexpr std::size_t kVector = 2 * kLane;

VRL_INLINE __m128i LoadLane(const std::byte* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
VRL_INLINE __m256i LoadLanes(const std::byte* low, const std::byte* high) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(LoadLane(low)), LoadLane(high), 1);
}
VRL_INLINE __m256i LoadBoth(const std::byte* from) {
    return _mm256_broadcastsi128_si256(LoadLane(from));
}
VRL_INLINE __m256i LoadTable(const std::uint8_t* table) {
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(table));
}
VRL_INLINE void Store(std::byte* to, __m256i value) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), value);
}
VRL_INLINE __m256 AsFloat(__m256i value) {
    return _mm256_castsi256_ps(value);
}
VRL_INLINE __m256i AsInteger(__m256 value) {
    return _mm256_castps_si256(value);
}

// ---- to more channels: bytes that move

/// Every vector of results comes from a window of 16 bytes by one shuffle.
template <std::size_t size, std::size_t inputs, std::size_t outputs>
struct TSpread : TBlockSizes<kLane / size, inputs * size, outputs * size> {
    static constexpr std::size_t kVectors = outputs / 2;
    /// Marks a byte without a source.
    static constexpr std::uint8_t kNone = 0x80;

    static constexpr bool HasSource(std::size_t place) {
        return inputs == 1 || place / size % outputs < inputs;
    }
    static constexpr std::size_t Source(std::size_t place) {
        const std::size_t frame = place / (size * outputs);
        const std::size_t channel = inputs == 1 ? 0 : place / size % outputs;
        return (frame * inputs + channel) * size + place % size;
    }

    struct TTable {
        alignas(kVector) std::uint8_t shuffle[kVectors][kVector]{};
        /// Where the windows begin.
        std::size_t window[kVectors]{};
    };
    static constexpr TTable kTable = [] {
        TTable table;
        for (std::size_t vector = 0; vector < kVectors; ++vector) {
            table.window[vector] = (inputs - 1) * kLane;
            for (std::size_t i = 0; i < kVector; ++i) {
                const std::size_t place = vector * kVector + i;
                if (HasSource(place) && Source(place) < table.window[vector])
                    table.window[vector] = Source(place);
            }
            for (std::size_t i = 0; i < kVector; ++i) {
                const std::size_t place = vector * kVector + i;
                table.shuffle[vector][i] =
                    HasSource(place) ? static_cast<std::uint8_t>(Source(place) - table.window[vector])
                                     : kNone;
            }
        }
        return table;
    }();

    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        for (std::size_t i = 0; i < kVectors; ++i) {
            const __m256i shuffle = LoadTable(kTable.shuffle[i]);
            __m256i result = _mm256_shuffle_epi8(LoadBoth(from + kTable.window[i]), shuffle);
            // The mark happens to be the silence of 8-bit samples; elsewhere silence is the 0 it shuffles in.
            if (size == 1 && inputs > 1) {
                const __m256i marks = _mm256_set1_epi8(static_cast<char>(kNone));
                result = _mm256_or_si256(result, _mm256_and_si256(shuffle, marks));
            }
            Store(to + i * kVector, result);
        }
    }
};

// ---- integers to fewer channels

/// Every sample divided, as the rules divide; `size` is that of a sample.
template <std::size_t size, int divisor> VRL_INLINE __m256i Divide(__m256i samples) {
    constexpr int kShift = divisor == 2 ? 1 : 2;
    if constexpr (size == 1 && divisor == 6) {
        // 10923 / 65536 is so little above a sixth that every quotient keeps its integer.
        const __m256i sixth = _mm256_set1_epi16(10923);
        const __m256i even = _mm256_mulhi_epu16(_mm256_and_si256(samples, _mm256_set1_epi16(0xFF)), sixth);
        const __m256i odd = _mm256_mulhi_epu16(_mm256_srli_epi16(samples, 8), sixth);
        return _mm256_or_si256(even, _mm256_slli_epi16(odd, 8));
    } else if constexpr (size == 1) {
        return _mm256_and_si256(_mm256_srli_epi16(samples, kShift), _mm256_set1_epi8(0xFF >> kShift));
    } else if constexpr (size == 2 && divisor == 6) {
        const __m256i floor = _mm256_mulhi_epi16(samples, _mm256_set1_epi16(10923));
        return _mm256_add_epi16(floor, _mm256_srli_epi16(samples, 15));
    } else if constexpr (size == 2) {
        const __m256i bias = _mm256_srli_epi16(_mm256_srai_epi16(samples, 15), 16 - kShift);
        return _mm256_srai_epi16(_mm256_add_epi16(samples, bias), kShift);
    } else if constexpr (divisor == 6) {
        const __m256i sixth = _mm256_set1_epi32(0x2AAAAAAB);
        const __m256i even = _mm256_srli_epi64(_mm256_mul_epi32(samples, sixth), 32);
        const __m256i odd = _mm256_mul_epi32(_mm256_srli_epi64(samples, 32), sixth);
        return _mm256_add_epi32(_mm256_blend_epi32(even, odd, 0xAA), _mm256_srli_epi32(samples, 31));
    } else {
        const __m256i bias = _mm256_srli_epi32(_mm256_srai_epi32(samples, 31), 32 - kShift);
        return _mm256_srai_epi32(_mm256_add_epi32(samples, bias), kShift);
    }
}

template <std::size_t size> VRL_INLINE __m256i Add(__m256i left, __m256i right) {
    if constexpr (size == 1) return _mm256_add_epi8(left, right);
    if constexpr (size == 2) return _mm256_add_epi16(left, right);
    return _mm256_add_epi32(left, right);
}

/// The sums of neighbours in twice their width. 32-bit samples wait for `Narrow`.
template <std::size_t size> VRL_INLINE __m256i AddNeighbours(__m256i samples) {
    if constexpr (size == 1) return _mm256_maddubs_epi16(samples, _mm256_set1_epi8(1));
    if constexpr (size == 2) return _mm256_madd_epi16(samples, _mm256_set1_epi16(1));
    return samples;
}

/// Two vectors of sums back in the width of samples: in each lane those of `low`, then those of `high`.
template <std::size_t size> VRL_INLINE __m256i Narrow(__m256i low, __m256i high) {
    if constexpr (size == 1) return _mm256_packus_epi16(low, high);
    if constexpr (size == 2) return _mm256_packs_epi32(low, high);
    const __m256 left = _mm256_shuffle_ps(AsFloat(low), AsFloat(high), _MM_SHUFFLE(2, 0, 2, 0));
    const __m256 right = _mm256_shuffle_ps(AsFloat(low), AsFloat(high), _MM_SHUFFLE(3, 1, 3, 1));
    return _mm256_add_epi32(AsInteger(left), AsInteger(right));
}

template <std::size_t size> struct TStereoToMono : TBlockSizes<2 * kLane / size, 2 * size, size> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const __m256i low = LoadLanes(from, from + 2 * kLane);
        const __m256i high = LoadLanes(from + kLane, from + 3 * kLane);
        Store(to, Narrow<size>(AddNeighbours<size>(Divide<size, 2>(low)),
                               AddNeighbours<size>(Divide<size, 2>(high))));
    }
};

/// A 6-channel frame is three pairs; three vectors of whole frames hold them as A B C A B C ... By blending,
/// all A (B, C) come into one vector, though in a rotated order: that of frame i is at 3i (3i + 1, 3i + 2)
/// modulo the pairs of a lane.
template <std::size_t pairSize> struct TPairs {
    static constexpr std::size_t kCount = kLane / pairSize;

    /// The 16-bit units of vector `part` that belong to pair `pair` of their frames.
    static constexpr int Units(std::size_t pair, std::size_t part) {
        int units = 0;
        for (std::size_t unit = 0; unit < kLane / 2; ++unit)
            if ((part * kCount + unit * 2 / pairSize) % 3 == pair) units |= 1 << unit;
        return units;
    }
    template <std::size_t pair> VRL_INLINE static __m256i Blend(const __m256i (&parts)[3]) {
        // The instructions contain them, so they are constants without optimisation too.
        constexpr int kSecond = Units(pair, 1);
        constexpr int kThird = Units(pair, 2);
        return _mm256_blend_epi16(_mm256_blend_epi16(parts[0], parts[1], kSecond), parts[2], kThird);
    }

    /// Shuffles that put the pairs in order, and that swap the halves of each as well.
    struct TTable {
        alignas(kVector) std::uint8_t inOrder[3][kVector]{};
        alignas(kVector) std::uint8_t swapped[3][kVector]{};
    };
    static constexpr TTable kTable = [] {
        TTable table;
        for (std::size_t pair = 0; pair < 3; ++pair) {
            for (std::size_t i = 0; i < kVector; ++i) {
                const std::size_t place = (3 * (i % kLane / pairSize) + pair) % kCount * pairSize;
                const std::size_t byte = i % pairSize;
                table.inOrder[pair][i] = static_cast<std::uint8_t>(place + byte);
                table.swapped[pair][i] = static_cast<std::uint8_t>(place + (byte + pairSize / 2) % pairSize);
            }
        }
        return table;
    }();

    template <std::size_t pair> VRL_INLINE static __m256i Order(__m256i pairs) {
        return _mm256_shuffle_epi8(pairs, LoadTable(kTable.inOrder[pair]));
    }
    template <std::size_t pair> VRL_INLINE static __m256i Swap(__m256i pairs) {
        return _mm256_shuffle_epi8(pairs, LoadTable(kTable.swapped[pair]));
    }
};

template <std::size_t size> struct TSixToMono : TBlockSizes<2 * kLane / size, 6 * size, size> {
    /// The sums of the frames in the three vectors whose lanes begin at `from` and 96 bytes behind. For
    /// 32-bit samples two sums each, of the even and the odd channels.
    VRL_INLINE static __m256i AddFrames(const std::byte* from) {
        using TPair = TPairs<2 * size>;
        __m256i parts[3];
        for (std::size_t i = 0; i < 3; ++i) {
            const std::byte* const lane = from + i * kLane;
            parts[i] = AddNeighbours<size>(Divide<size, 6>(LoadLanes(lane, lane + 6 * kLane)));
        }
        const __m256i first = TPair::template Order<0>(TPair::template Blend<0>(parts));
        const __m256i second = TPair::template Order<1>(TPair::template Blend<1>(parts));
        const __m256i third = TPair::template Order<2>(TPair::template Blend<2>(parts));
        // No sum of 8-bit samples exceeds a byte, so one kind of addition serves them all.
        return _mm256_add_epi32(_mm256_add_epi32(first, second), third);
    }
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        Store(to, Narrow<size>(AddFrames(from), AddFrames(from + 3 * kLane)));
    }
};

template <std::size_t size> struct TSixToStereo : TBlockSizes<kLane / size, 6 * size, 2 * size> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        using TPair = TPairs<2 * size>;
        __m256i parts[3];
        for (std::size_t i = 0; i < 3; ++i) {
            const std::byte* const lane = from + i * kLane;
            parts[i] = Divide<size, 4>(LoadLanes(lane, lane + 3 * kLane));
        }
        const __m256i front = TPair::template Order<0>(TPair::template Blend<0>(parts));
        const __m256i middle = TPair::template Blend<1>(parts);
        const __m256i rear = TPair::template Order<2>(TPair::template Blend<2>(parts));
        const __m256i both = Add<size>(TPair::template Order<1>(middle), TPair::template Swap<1>(middle));
        Store(to, Add<size>(Add<size>(front, rear), both));
    }
};

// ---- floats to fewer channels

struct TFloatStereoToMono : TBlockSizes<16, 8, 4> {
    struct TChannels {
        __m256 left, right;
        VRL_INLINE __m256 Add() const { return _mm256_add_ps(left, right); }
        VRL_INLINE __m256 AddHalves() const { return _mm256_add_ps(Halve(left), Halve(right)); }
    };
    VRL_INLINE static __m256 Halve(__m256 values) { return _mm256_mul_ps(values, _mm256_set1_ps(0.5F)); }
    /// Eight frames, in each lane first two of the first half and then two of the second.
    VRL_INLINE static TChannels LoadChannels(const std::byte* from) {
        const __m256 low = _mm256_loadu_ps(reinterpret_cast<const float*>(from));
        const __m256 high = _mm256_loadu_ps(reinterpret_cast<const float*>(from + kVector));
        return {_mm256_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)),
                _mm256_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))};
    }
    VRL_INLINE static void StoreInOrder(std::byte* to, __m256 values) {
        Store(to, _mm256_permute4x64_epi64(AsInteger(values), _MM_SHUFFLE(3, 1, 2, 0)));
    }

    /// Half the single-precision sum is the double-precision result rounded to float: a double has more than
    /// twice the digits of a float, so rounding twice changes no sum of two floats, and where halving is not
    /// exact the sum was. Only a sum beyond the range of floats needs its terms halved first, and then a term
    /// that loses a digit by it is too small to count.
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const TChannels first = LoadChannels(from);
        const TChannels second = LoadChannels(from + 2 * kVector);
        __m256 low = first.Add();
        __m256 high = second.Add();
        // An infinity times 0 is not a number.
        const __m256 zero = _mm256_setzero_ps();
        const __m256 isBeyond =
            _mm256_cmp_ps(_mm256_mul_ps(low, zero), _mm256_mul_ps(high, zero), _CMP_UNORD_Q);
        if (_mm256_movemask_ps(isBeyond) == 0) [[likely]] {
            low = Halve(low);
            high = Halve(high);
        } else {
            low = PickFinite(low, first);
            high = PickFinite(high, second);
        }
        StoreInOrder(to, low);
        StoreInOrder(to + kVector, high);
    }
    VRL_INLINE static __m256 PickFinite(__m256 sum, const TChannels& channels) {
        const __m256 zero = _mm256_setzero_ps();
        const __m256 isBeyond = _mm256_cmp_ps(_mm256_mul_ps(sum, zero), zero, _CMP_UNORD_Q);
        return _mm256_blendv_ps(Halve(sum), channels.AddHalves(), isBeyond);
    }
};

/// The channels of two frames in double precision, two to a vector: channels 0 and 1 of the first and of the
/// second frame, channels 2 and 3, channels 4 and 5.
struct TTwoFrames {
    __m256d front, middle, rear;
};

VRL_INLINE __m256d LoadFour(const std::byte* from) {
    return _mm256_cvtps_pd(_mm_castsi128_ps(LoadLane(from)));
}

template <class TTerm> VRL_INLINE TTwoFrames LoadTwoFrames(const std::byte* from, TTerm term) {
    const __m256d low = term(LoadFour(from));
    const __m256d across = term(LoadFour(from + kLane));
    const __m256d high = term(LoadFour(from + 2 * kLane));
    return {_mm256_blend_pd(low, across, 0b1100), _mm256_permute2f128_pd(low, high, 0x21),
            _mm256_blend_pd(across, high, 0b1100)};
}

/// The quotient by 6 of a double that was a float. A sixth is the sum of two doubles, the second 2^-54 of the
/// first. Beyond the 53 digits of a double, a sixth of a 24-digit number continues with 0101..., 1010... or
/// nothing, always far from the half of a unit, so the tiny error of the second product never turns a
/// rounding: the result is the correctly rounded quotient, and the same as that of a division.
struct TSixth {
    VRL_INLINE __m256d operator()(__m256d value) const {
        const __m256d rest = _mm256_mul_pd(value, _mm256_set1_pd(0x1.5555555555555p-57));
        return _mm256_fmadd_pd(value, _mm256_set1_pd(0x1.5555555555555p-3), rest);
    }
};

struct TFloatSixToMono : TBlockSizes<4, 24, 4> {
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        const TTwoFrames a = LoadTwoFrames(from, TSixth{});
        const TTwoFrames b = LoadTwoFrames(from + 3 * kLane, TSixth{});
        // Frames 0, 2, 1, 3.
        __m256d sum = _mm256_unpacklo_pd(a.front, b.front);
        sum = _mm256_add_pd(sum, _mm256_unpackhi_pd(a.front, b.front));
        sum = _mm256_add_pd(sum, _mm256_unpacklo_pd(a.middle, b.middle));
        sum = _mm256_add_pd(sum, _mm256_unpackhi_pd(a.middle, b.middle));
        sum = _mm256_add_pd(sum, _mm256_unpacklo_pd(a.rear, b.rear));
        sum = _mm256_add_pd(sum, _mm256_unpackhi_pd(a.rear, b.rear));
        const __m128 result = _mm256_cvtpd_ps(sum);
        _mm_storeu_ps(reinterpret_cast<float*>(to), _mm_permute_ps(result, _MM_SHUFFLE(3, 1, 2, 0)));
    }
};

struct TFloatSixToStereo : TBlockSizes<4, 24, 8> {
    /// A power of two divides the sum as well as its terms: no double made of floats comes near the ends of
    /// its range.
    VRL_INLINE static __m128 MixTwo(const std::byte* from) {
        struct TSame {
            VRL_INLINE __m256d operator()(__m256d value) const { return value; }
        };
        const TTwoFrames in = LoadTwoFrames(from, TSame{});
        __m256d sum = _mm256_add_pd(in.front, _mm256_movedup_pd(in.middle));
        sum = _mm256_add_pd(sum, _mm256_permute_pd(in.middle, 0b1111));
        sum = _mm256_add_pd(sum, in.rear);
        return _mm256_cvtpd_ps(_mm256_mul_pd(sum, _mm256_set1_pd(0.25)));
    }
    VRL_INLINE static void Convert(std::byte* to, const std::byte* from) {
        _mm_storeu_ps(reinterpret_cast<float*>(to), MixTwo(from));
        _mm_storeu_ps(reinterpret_cast<float*>(to + kLane), MixTwo(from + 3 * kLane));
    }
};

template <class TBlock, std::size_t pair, std::size_t format>
constexpr TRoutine kMix = ConvertBlocks<TBlock, kScalarMixes, pair, format>;

} // namespace

// Wide samples to six channels are nothing but stores, and long ones that cross cache lines lose to short
// ones.
constinit const TMixSet kAvx2Mixes{
    "avx2",
    [] { return HasAvx2(); },
    {{kMix<TSpread<1, 1, 2>, 0, 0>, kMix<TSpread<2, 1, 2>, 0, 1>, kMix<TSpread<4, 1, 2>, 0, 2>,
      kMix<TSpread<4, 1, 2>, 0, 3>},
     {kMix<TSpread<1, 1, 6>, 1, 0>, kMix<TSpread<2, 1, 6>, 1, 1>, nullptr, nullptr},
     {kMix<TStereoToMono<1>, 2, 0>, kMix<TStereoToMono<2>, 2, 1>, kMix<TStereoToMono<4>, 2, 2>,
      kMix<TFloatStereoToMono, 2, 3>},
     {kMix<TSpread<1, 2, 6>, 3, 0>, kMix<TSpread<2, 2, 6>, 3, 1>, nullptr, nullptr},
     {kMix<TSixToMono<1>, 4, 0>, kMix<TSixToMono<2>, 4, 1>, kMix<TSixToMono<4>, 4, 2>,
      kMix<TFloatSixToMono, 4, 3>},
     {kMix<TSixToStereo<1>, 5, 0>, kMix<TSixToStereo<2>, 5, 1>, kMix<TSixToStereo<4>, 5, 2>,
      kMix<TFloatSixToStereo, 5, 3>}}};

} // namespace vorlund::pcm
