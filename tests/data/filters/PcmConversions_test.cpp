// The conversion of samples: the rules against exact arithmetic, and every set of routines against the rules,
// bit for bit.
#include "vorlund/data/filters/PcmConversions.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace vorlund::pcm {
namespace {

using TBytes = std::vector<std::uint8_t>;

constexpr std::size_t kSizes[] = {1, 2, 4, 4};
constexpr const char* kNames[] = {"U8", "S16", "S32", "F32"};
constexpr std::uint8_t kUntouched = 0xA5;

/// The patterns of samples, one a word.
using TPatterns = std::vector<std::uint32_t>;

TBytes Pack(const TPatterns& patterns, std::uint32_t format) {
    TBytes bytes(patterns.size() * kSizes[format]);
    for (std::size_t i = 0; i < patterns.size(); ++i) {
        for (std::size_t k = 0; k < kSizes[format]; ++k)
            bytes[i * kSizes[format] + k] = static_cast<std::uint8_t>(patterns[i] >> 8 * k);
    }
    return bytes;
}

// ---- the rules again, in integers: nothing is rounded by accident

std::int64_t SignedValue(std::uint32_t pattern, std::uint32_t format) {
    switch (format) {
    case 0:
        return static_cast<std::int64_t>(pattern) - 128;
    case 1:
        return static_cast<std::int16_t>(pattern);
    default:
        return static_cast<std::int32_t>(pattern);
    }
}

/// An integer of `bits` bits as a float between -1 and 1: the significant digits by hand, rounded to nearest,
/// ties to even.
std::uint32_t IntegerToFloat(std::int64_t value, int bits) {
    if (value == 0) return 0;
    const std::uint32_t sign = value < 0 ? 0x80000000 : 0;
    auto magnitude = static_cast<std::uint64_t>(value < 0 ? -value : value);
    int exponent = 0;
    // 24 digits and two more, of which the last one stands for everything behind it.
    while (magnitude >= 1u << 26) {
        magnitude = magnitude >> 1 | (magnitude & 1);
        ++exponent;
    }
    while (magnitude < 1u << 25) {
        magnitude <<= 1;
        --exponent;
    }
    const std::uint64_t rest = magnitude & 3;
    magnitude >>= 2;
    exponent += 2;
    if (rest == 3 || (rest == 2 && (magnitude & 1))) ++magnitude;
    if (magnitude == 1u << 24) {
        magnitude >>= 1;
        ++exponent;
    }
    const int biased = exponent - (bits - 1) + 23 + 127;
    return sign | static_cast<std::uint32_t>(biased) << 23 |
           (static_cast<std::uint32_t>(magnitude) & 0x7FFFFF);
}

/// (s + offset) * twice / 2, truncated to a 32-bit integer, from the digits of the float.
std::uint32_t FloatToInteger(std::uint32_t pattern, int offset, std::int64_t twice) {
    constexpr std::uint32_t kIndefinite = 0x80000000;
    const int biased = static_cast<int>(pattern >> 23 & 0xFF);
    const std::int64_t digits = biased == 0 ? pattern & 0x7FFFFF : (pattern & 0x7FFFFF) | 0x800000;
    const int exponent = (biased == 0 ? 1 : biased) - 150;
    // From 2^32 on, infinities and NaN included, no product fits.
    if (exponent > 8) return kIndefinite;
    // A trifle more or less than the offset, which gives no integer.
    if (offset != 0 && exponent < -40) return static_cast<std::uint32_t>(offset * twice / 2);

    // The result is sum / 2^shift.
    const std::int64_t product = (pattern >> 31 ? -digits : digits) * twice;
    const std::int64_t sum =
        exponent > 0 ? product * (std::int64_t{1} << exponent) + offset * twice
                     : product + (offset == 0 ? 0 : offset * twice * (std::int64_t{1} << -exponent));
    const int shift = exponent > 0 ? 1 : 1 - exponent;
    if (shift > 63) return 0;
    const std::int64_t magnitude = (sum < 0 ? -sum : sum) >> shift;
    if (magnitude > (sum < 0 ? 0x80000000 : 0x7FFFFFFF)) return kIndefinite;
    return static_cast<std::uint32_t>(sum < 0 ? -magnitude : magnitude);
}

/// What one sample becomes.
std::uint32_t Expected(std::uint32_t pattern, std::uint32_t from, std::uint32_t to) {
    constexpr int kBits[] = {8, 16, 32};
    if (from == 3) {
        if (to == 0) return FloatToInteger(pattern, 1, 255) & 0xFF;
        if (to == 1) return FloatToInteger(pattern, 0, 2 * 32767) & 0xFFFF;
        return FloatToInteger(pattern, 0, 2 * 214743648LL);
    }
    const std::int64_t value = SignedValue(pattern, from);
    if (to == 3) return IntegerToFloat(value, kBits[from]);
    const std::int64_t scaled = kBits[to] > kBits[from]
                                    ? value * (std::int64_t{1} << (kBits[to] - kBits[from]))
                                    : value >> (kBits[from] - kBits[to]);
    if (to == 0) return static_cast<std::uint32_t>(scaled + 128) & 0xFF;
    return static_cast<std::uint32_t>(scaled) & (to == 1 ? 0xFFFF : 0xFFFFFFFF);
}

// ---- inputs

std::uint32_t PatternOf(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

/// Both signs of `magnitude` and of its neighbours.
void AddAround(TPatterns& patterns, std::uint32_t magnitude, std::uint32_t reach = 3) {
    for (std::uint32_t pattern = magnitude - reach; pattern != magnitude + reach + 1; ++pattern) {
        patterns.push_back(pattern & 0x7FFFFFFF);
        patterns.push_back(pattern | 0x80000000);
    }
}

/// Floats of every kind: a grid over all patterns, every exponent, the neighbourhood of the integers of each
/// scale and of its limits, infinities, NaN, denormals.
TPatterns Floats() {
    TPatterns patterns;
    for (std::uint64_t pattern = 0; pattern < std::uint64_t{1} << 32; pattern += 40009)
        patterns.push_back(static_cast<std::uint32_t>(pattern));
    for (std::uint32_t exponent = 0; exponent < 256; ++exponent) {
        AddAround(patterns, exponent << 23);
        AddAround(patterns, exponent << 23 | 0x400000);
    }
    for (int i = -255; i <= 255; ++i) AddAround(patterns, PatternOf(static_cast<float>(i / 127.5 - 1)));
    for (int i = 1; i <= 32767; i += 7) AddAround(patterns, PatternOf(static_cast<float>(i / 32767.0)), 1);
    for (const double limit : {0x1p31, 0x1p32, 0x1p24, 0x1p23, 0x1p16, 0x1p15, 0x1p8, 1.0}) {
        for (const double scale : {127.5, 32767.0, 214743648.0})
            AddAround(patterns, PatternOf(static_cast<float>(limit / scale)), 20);
    }
    for (const float value : {1.0f, 1.5f, 2.0f, 10.0f, 512.0f, 1e9f, 1e30f})
        AddAround(patterns, PatternOf(value));
    std::mt19937 random(5);
    std::uniform_real_distribution<float> sample(-1, 1);
    for (int i = 0; i < 20000; ++i) patterns.push_back(PatternOf(sample(random)));
    for (int i = 0; i < 20000; ++i) patterns.push_back(static_cast<std::uint32_t>(random()));
    return patterns;
}

TPatterns Longs() {
    TPatterns patterns;
    for (std::uint64_t pattern = 0; pattern < std::uint64_t{1} << 32; pattern += 40009)
        patterns.push_back(static_cast<std::uint32_t>(pattern));
    for (int bit = 0; bit < 32; ++bit) AddAround(patterns, std::uint32_t{1} << bit, 5);
    // Ties of the rounding to 24 digits.
    for (int bit = 24; bit < 31; ++bit) {
        for (std::uint32_t digits = 0; digits < 64; ++digits)
            AddAround(patterns, (1u << bit) + (digits << (bit - 24)), 2);
    }
    std::mt19937 random(6);
    for (int i = 0; i < 20000; ++i) patterns.push_back(static_cast<std::uint32_t>(random()));
    return patterns;
}

const TPatterns& InputsOf(std::uint32_t format) {
    static const TPatterns inputs[] = {[] {
                                           TPatterns all(256);
                                           for (std::uint32_t i = 0; i < all.size(); ++i) all[i] = i;
                                           return all;
                                       }(),
                                       [] {
                                           TPatterns all(65536);
                                           for (std::uint32_t i = 0; i < all.size(); ++i) all[i] = i;
                                           return all;
                                       }(),
                                       Longs(), Floats()};
    return inputs[format];
}

// ---- the suites

struct TPair {
    std::uint32_t from;
    std::uint32_t to;
};

std::string NameOf(const TPair& pair) {
    return std::string(kNames[pair.from]) + "To" + kNames[pair.to];
}

class PcmConversions : public testing::TestWithParam<TPair> {
protected:
    const std::uint32_t from_ = GetParam().from;
    const std::uint32_t to_ = GetParam().to;
    const std::size_t inSize_ = kSizes[from_];
    const std::size_t outSize_ = kSizes[to_];
    const TRoutine reference_ = kScalarConversions.routines[from_][to_];

    /// The routines of every set that this processor supports.
    std::vector<std::pair<const char*, TRoutine>> Routines() const {
        std::vector<std::pair<const char*, TRoutine>> routines;
        for (const TConversionSet* set : GetConversionSets()) {
            if (set->isSupported() && set->routines[from_][to_])
                routines.emplace_back(set->name, set->routines[from_][to_]);
        }
        return routines;
    }
    TBytes Reference(const TBytes& input) const {
        TBytes output(input.size() / inSize_ * outSize_);
        reference_(output.data(), input.data(), input.size() / inSize_);
        return output;
    }
};

TEST_P(PcmConversions, TheReferenceFollowsTheRules) {
    const TPatterns& inputs = InputsOf(from_);
    const TBytes output = Reference(Pack(inputs, from_));
    TPatterns expected;
    for (const std::uint32_t input : inputs) expected.push_back(Expected(input, from_, to_));
    const TBytes bytes = Pack(expected, to_);
    ASSERT_EQ(output.size(), bytes.size());
    if (output == bytes) return;
    int shown = 0;
    for (std::size_t i = 0; i < inputs.size() && shown < 5; ++i) {
        if (std::memcmp(&output[i * outSize_], &bytes[i * outSize_], outSize_) == 0) continue;
        ADD_FAILURE() << "pattern " << std::hex << inputs[i] << " expected " << expected[i];
        ++shown;
    }
}

TEST_P(PcmConversions, EverySetGivesTheSameBits) {
    const TBytes input = Pack(InputsOf(from_), from_);
    const TBytes expected = Reference(input);
    std::string ran;
    for (const auto& [name, routine] : Routines()) {
        TBytes output(expected.size());
        routine(output.data(), input.data(), InputsOf(from_).size());
        EXPECT_TRUE(output == expected) << name;
        ran += std::string(name) + " ";
    }
    // Each supported set has all routines.
    std::string supported;
    for (const TConversionSet* set : GetConversionSets())
        if (set->isSupported()) supported += std::string(set->name) + " ";
    EXPECT_EQ(ran, supported);
}

TEST_P(PcmConversions, SamplesOfAllKindsMix) {
    // Each sample among others, so that no block is of one kind only.
    const TPatterns& inputs = InputsOf(from_);
    std::mt19937 random(7);
    TPatterns mixed(20000);
    for (std::uint32_t& pattern : mixed) pattern = inputs[random() % inputs.size()];
    const TBytes input = Pack(mixed, from_);
    const TBytes expected = Reference(input);
    for (const auto& [name, routine] : Routines()) {
        TBytes output(expected.size());
        routine(output.data(), input.data(), mixed.size());
        EXPECT_TRUE(output == expected) << name;
    }
}

TEST_P(PcmConversions, EveryLengthAndAlignment) {
    constexpr std::size_t kMaxCount = 131;
    const TPatterns& inputs = InputsOf(from_);
    std::mt19937 random(8);
    TPatterns some(kMaxCount);
    for (std::uint32_t& pattern : some) pattern = inputs[random() % inputs.size()];
    const TBytes samples = Pack(some, from_);
    const TBytes expected = Reference(samples);
    for (const auto& [name, routine] : Routines()) {
        for (std::size_t count = 0; count <= kMaxCount; ++count) {
            for (std::size_t shift = 0; shift < 33; shift += shift < 4 ? 1 : 7) {
                // The source ends with its last sample, where the address sanitizer watches.
                TBytes source(shift + count * inSize_);
                std::copy_n(samples.begin(), count * inSize_,
                            source.begin() + static_cast<std::ptrdiff_t>(shift));
                const std::size_t start = (shift * 5 + 3) % 37;
                TBytes output(start + count * outSize_ + 64, kUntouched);
                routine(output.data() + start, source.data() + shift, count);
                TBytes whole(output.size(), kUntouched);
                std::copy_n(expected.begin(), count * outSize_,
                            whole.begin() + static_cast<std::ptrdiff_t>(start));
                ASSERT_TRUE(output == whole) << name << ", " << count << " samples, shift " << shift;
            }
        }
    }
}

TEST_P(PcmConversions, TheFastestSetIsChosen) {
    EXPECT_EQ(FindConversion(from_, to_), Routines().back().second);
}

TEST_P(PcmConversions, LeaveTheRoundingAsItWas) {
    const TBytes input = Pack(InputsOf(from_), from_);
    for (const auto& [name, routine] : Routines()) {
        TBytes output(InputsOf(from_).size() * outSize_);
        routine(output.data(), input.data(), InputsOf(from_).size());
        volatile float one = 1;
        volatile float nearlyOne = 1 - 0x1p-24f;
        EXPECT_EQ(one + nearlyOne, 2) << name;
        EXPECT_EQ(std::nearbyint(one * 2.5f + nearlyOne * 0), 2) << name;
    }
}

std::vector<TPair> Pairs() {
    std::vector<TPair> pairs;
    for (std::uint32_t from = 0; from < kFormatCount; ++from)
        for (std::uint32_t to = 0; to < kFormatCount; ++to)
            if (from != to) pairs.push_back({from, to});
    return pairs;
}

INSTANTIATE_TEST_SUITE_P(Pairs, PcmConversions, testing::ValuesIn(Pairs()),
                         [](const auto& pair) { return NameOf(pair.param); });

TEST(PcmConversionsSets, TheReferenceIsCompleteAndAlwaysThere) {
    const auto sets = GetConversionSets();
    ASSERT_FALSE(sets.empty());
    EXPECT_EQ(sets[0], &kScalarConversions);
    EXPECT_TRUE(sets[0]->isSupported());
    for (std::uint32_t from = 0; from < kFormatCount; ++from)
        for (std::uint32_t to = 0; to < kFormatCount; ++to)
            EXPECT_EQ(sets[0]->routines[from][to] != nullptr, from != to);
}

TEST(PcmConversionsSets, NothingToDoHasNoRoutine) {
    for (std::uint32_t format = 0; format < kFormatCount; ++format) {
        EXPECT_EQ(FindConversion(format, format), nullptr);
        for (const std::uint32_t other : {4u, 7u, 0x80000000u, 0xFFFFFFFFu}) {
            EXPECT_EQ(FindConversion(format, other), nullptr);
            EXPECT_EQ(FindConversion(other, format), nullptr);
            EXPECT_EQ(FindConversion(other, other), nullptr);
        }
    }
}

} // namespace
} // namespace vorlund::pcm
