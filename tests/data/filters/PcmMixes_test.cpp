/// Every set of channel mixes against the rules, written here a second time: all bytes, edges and random
/// values of the wider samples, every length around the block sizes, every alignment.
#include "vorlund/data/filters/PcmMixes.h"

#include "support/GuardedUnits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

namespace pcm = vorlund::pcm;
using pcm::TMixPair;
using pcm::TMixSet;

template <class TSample> constexpr std::uint32_t kCode = 3;
template <> constexpr std::uint32_t kCode<std::uint8_t> = 0;
template <> constexpr std::uint32_t kCode<std::int16_t> = 1;
template <> constexpr std::uint32_t kCode<std::int32_t> = 2;

// ---- the rules

/// Some channels of a frame: terms divided toward zero and summed without limits.
template <class TSample>
TSample Sum(const TSample* frame, std::initializer_list<std::size_t> channels, std::int64_t divisor) {
    std::int64_t sum = 0;
    for (const std::size_t channel : channels) {
        const std::int64_t term = frame[channel];
        sum += term < 0 ? -(-term / divisor) : term / divisor;
    }
    const auto result = static_cast<TSample>(sum);
    if (result != sum) ADD_FAILURE() << sum << " is no sample";
    return result;
}

template <> float Sum(const float* frame, std::initializer_list<std::size_t> channels, std::int64_t divisor) {
    // Nothing added to -0.0 is just that.
    double sum = -0.0;
    for (const std::size_t channel : channels) sum += double{frame[channel]} / static_cast<double>(divisor);
    return static_cast<float>(sum);
}

template <class TSample> void MixFrame(TMixPair pair, TSample* out, const TSample* in) {
    constexpr TSample kSilence = sizeof(TSample) == 1 ? TSample(0x80) : TSample(0);
    if (pair.inputChannels == 1) {
        std::fill_n(out, pair.outputChannels, in[0]);
    } else if (pair.outputChannels == 6) {
        std::fill_n(std::copy_n(in, 2, out), 4, kSilence);
    } else if (pair.inputChannels == 2) {
        out[0] = Sum(in, {0, 1}, 2);
    } else if (pair.outputChannels == 1) {
        out[0] = Sum(in, {0, 1, 2, 3, 4, 5}, 6);
    } else {
        out[0] = Sum(in, {0, 2, 3, 4}, 4);
        out[1] = Sum(in, {1, 2, 3, 5}, 4);
    }
}

// ---- comparison

template <class TSample> bool IsSame(TSample left, TSample right) {
    return left == right;
}
/// The same bits, or some quiet NaN each.
template <> bool IsSame(float left, float right) {
    if (std::isnan(left) && std::isnan(right)) return true;
    return std::bit_cast<std::uint32_t>(left) == std::bit_cast<std::uint32_t>(right);
}

std::vector<const TMixSet*> SupportedSets() {
    std::vector<const TMixSet*> sets;
    for (const TMixSet* set : pcm::GetMixSets())
        if (set->isSupported()) sets.push_back(set);
    return sets;
}

/// Each supported set in turn; the name of the test says which one ran.
class PcmMixes : public testing::TestWithParam<const TMixSet*> {
protected:
    static pcm::TRoutine Find(TMixPair pair, std::uint32_t code) {
        return pcm::FindMix(*GetParam(), pair.inputChannels, pair.outputChannels, code);
    }

    /// Mixes the samples, any whole number of frames, and compares.
    template <class TSample> static void Check(TMixPair pair, const std::vector<TSample>& samples) {
        const pcm::TRoutine mix = Find(pair, kCode<TSample>);
        if (!mix) return;
        const std::size_t frames = samples.size() / pair.inputChannels;
        std::vector<TSample> expected(frames * pair.outputChannels);
        for (std::size_t i = 0; i < frames; ++i)
            MixFrame(pair, &expected[i * pair.outputChannels], &samples[i * pair.inputChannels]);
        std::vector<TSample> result(expected.size(), TSample(77));
        mix(result.data(), samples.data(), frames);
        for (std::size_t i = 0; i < expected.size(); ++i) {
            if (IsSame(result[i], expected[i])) continue;
            const std::size_t frame = i / pair.outputChannels * pair.inputChannels;
            std::string in;
            for (std::size_t c = 0; c < pair.inputChannels; ++c)
                in += testing::PrintToString(samples[frame + c]) + " ";
            FAIL() << pair.inputChannels << " to " << pair.outputChannels << ", frame "
                   << i / pair.outputChannels << " of " << in << "gave " << testing::PrintToString(result[i])
                   << ", not " << testing::PrintToString(expected[i]);
        }
    }
    template <class TSample> static void CheckAll(const std::vector<TSample>& frames) {
        for (const TMixPair pair : pcm::kMixPairs)
            if (frames.size() % pair.inputChannels == 0) Check(pair, frames);
    }

    /// All pairs of values in all pairs of channels, random ones in the others.
    template <class TSample, class TRandom>
    static void CheckPairs(const std::vector<TSample>& values, TRandom random) {
        std::vector<TSample> all;
        for (const TSample first : values)
            for (const TSample second : values) all.insert(all.end(), {first, second});
        Check({1, 2}, all);
        Check({1, 6}, all);
        Check({2, 1}, all);
        Check({2, 6}, all);
        for (std::size_t first = 0; first < 6; ++first) {
            for (std::size_t second = first + 1; second < 6; ++second) {
                std::vector<TSample> frames(all.size() * 3);
                for (TSample& sample : frames) sample = random();
                for (std::size_t i = 0; i < all.size(); i += 2) {
                    frames[i * 3 + first] = all[i];
                    frames[i * 3 + second] = all[i + 1];
                }
                Check({6, 1}, frames);
                Check({6, 2}, frames);
            }
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Sets, PcmMixes, testing::ValuesIn(SupportedSets()),
                         [](const auto& set) { return std::string(set.param->name); });

constexpr std::size_t kRandomSamples = 6 * 20000;

template <class TSample> std::vector<TSample> RandomBits(std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<TSample> samples(kRandomSamples);
    for (TSample& sample : samples) {
        const auto bits = static_cast<std::uint32_t>(random());
        std::memcpy(&sample, &bits, sizeof sample);
    }
    return samples;
}

/// Everything around zero and around the ends, and every remainder of the divisions there.
template <class TSample> std::vector<TSample> IntegerEdges() {
    constexpr std::int64_t kMin = std::numeric_limits<TSample>::min();
    constexpr std::int64_t kMax = std::numeric_limits<TSample>::max();
    std::vector<TSample> values;
    for (std::int64_t i = 0; i < 14; ++i) {
        for (const std::int64_t value : {i, -i, kMin + i, kMax - i, kMin / 2 - i, kMax / 2 + i})
            values.push_back(static_cast<TSample>(value));
    }
    return values;
}

TEST_P(PcmMixes, AllBytes) {
    std::vector<std::uint8_t> values;
    for (unsigned int value = 0; value < 256; ++value) values.push_back(static_cast<std::uint8_t>(value));
    CheckPairs(values, [random = std::mt19937(1)]() mutable { return static_cast<std::uint8_t>(random()); });
    CheckAll(RandomBits<std::uint8_t>(2));
}

TEST_P(PcmMixes, All16BitValuesInEveryChannel) {
    for (std::size_t channel = 0; channel < 6; ++channel) {
        std::vector<std::int16_t> frames(6 * 65536);
        for (std::size_t i = 0; i < 65536; ++i)
            frames[i * 6 + channel] = static_cast<std::int16_t>(static_cast<int>(i) - 32768);
        Check({2, 1}, frames);
        Check({6, 1}, frames);
        Check({6, 2}, frames);
    }
}

TEST_P(PcmMixes, Edges16Bit) {
    const auto edges = IntegerEdges<std::int16_t>();
    CheckPairs(edges, [&, random = std::mt19937(3)]() mutable { return edges[random() % edges.size()]; });
    CheckAll(RandomBits<std::int16_t>(4));
}

TEST_P(PcmMixes, Edges32Bit) {
    const auto edges = IntegerEdges<std::int32_t>();
    CheckPairs(edges, [&, random = std::mt19937(5)]() mutable { return edges[random() % edges.size()]; });
    CheckAll(RandomBits<std::int32_t>(6));
}

TEST_P(PcmMixes, SumsOfExtremesKeepTheirRange) {
    for (const std::int32_t value :
         {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
        CheckAll(std::vector<std::int32_t>(6 * 64, value));
        CheckAll(std::vector<std::int16_t>(6 * 64, static_cast<std::int16_t>(value >> 16)));
    }
}

TEST_P(PcmMixes, EdgesOfFloats) {
    using TLimits = std::numeric_limits<float>;
    std::vector<float> edges;
    for (const float value : {0.0F,
                              TLimits::denorm_min(),
                              3 * TLimits::denorm_min(),
                              TLimits::min() - TLimits::denorm_min(),
                              TLimits::min(),
                              TLimits::min() + TLimits::denorm_min(),
                              2 * TLimits::min(),
                              4 * TLimits::min() + 2 * TLimits::denorm_min(),
                              0x1p-60F,
                              0x1p-24F,
                              0x1.000002p-24F,
                              0x1p-23F,
                              0.5F,
                              1 - 0x1p-24F,
                              1.0F,
                              1 + 0x1p-23F,
                              3.0F,
                              6.0F,
                              0x1.FFFFFEp23F,
                              0x1p103F,
                              0x1p104F,
                              0x1p126F,
                              0x1.FFFFFEp126F,
                              0x1p127F,
                              TLimits::max(),
                              TLimits::infinity(),
                              TLimits::quiet_NaN()}) {
        edges.insert(edges.end(), {value, -value});
    }
    CheckPairs(edges, [&, random = std::mt19937(7)]() mutable { return edges[random() % edges.size()]; });
    // The same among zeros, where nothing is hidden by larger terms.
    CheckPairs(edges, [] { return 0.0F; });
}

TEST_P(PcmMixes, RandomFloats) {
    CheckAll(RandomBits<float>(8));
    // Equal magnitudes, where sums cancel and fall between two floats.
    for (const int exponent : {-149, -140, -126, -125, 0, 100, 127}) {
        std::mt19937 random(9);
        std::vector<float> samples(kRandomSamples);
        for (float& sample : samples) {
            const auto digits = static_cast<float>(static_cast<std::int32_t>(random()) >> 8);
            sample = std::ldexp(digits, exponent - 23 + static_cast<int>(random() % 3));
        }
        CheckAll(samples);
    }
}

/// x, minus its successor, and their distance: the terms cancel but for the rounding of the divisions, whose
/// last digit of 53 is all that is left.
TEST_P(PcmMixes, QuotientsOfFloatsAreRoundedToDoubles) {
    std::vector<float> frames;
    for (std::uint32_t digits = 0; digits < 1U << 23; digits += 23) {
        const auto x = std::bit_cast<float>(0x3F800000 + digits);
        const auto next = std::bit_cast<float>(0x3F800000 + digits + 1);
        frames.insert(frames.end(), {x, -next, next - x, 0.0F, 0.0F, 0.0F});
    }
    Check({6, 1}, frames);
    Check({6, 2}, frames);
}

/// Places and lengths: whatever they are, the same results, no byte beyond them written and none read.
TEST_P(PcmMixes, EveryLengthAndAlignment) {
    constexpr std::size_t kSizes[] = {1, 2, 4, 4};
    constexpr std::size_t kLengths = 70;
    constexpr std::uint8_t kGuard = 0xA5;
    const vorlund::test::CGuardedUnits memory;
    std::mt19937 random(10);
    for (const TMixPair pair : pcm::kMixPairs) {
        for (std::uint32_t code = 0; code < pcm::kMixFormatCount; ++code) {
            const pcm::TRoutine mix = Find(pair, code);
            if (!mix) continue;
            const pcm::TRoutine reference =
                pcm::FindMix(pcm::kScalarMixes, pair.inputChannels, pair.outputChannels, code);
            const std::size_t inputSize = pair.inputChannels * kSizes[code];
            const std::size_t outputSize = pair.outputChannels * kSizes[code];
            for (std::size_t frames = 0; frames < kLengths; ++frames) {
                for (std::size_t shift = 0; shift < 32; shift += frames < 40 ? 1 : 7) {
                    std::vector<std::uint8_t> input(frames * inputSize);
                    // Small bytes make finite floats.
                    for (std::uint8_t& byte : input) byte = static_cast<std::uint8_t>(random() % 0x7F);
                    auto* const end = reinterpret_cast<std::uint8_t*>(memory.End());
                    std::uint8_t* const source = end - shift - input.size();
                    std::copy(input.begin(), input.end(), source);

                    std::vector<std::uint8_t> expected(shift + frames * outputSize + 40, kGuard);
                    std::vector<std::uint8_t> result = expected;
                    reference(expected.data() + shift, input.data(), frames);
                    mix(result.data() + shift, source, frames);
                    ASSERT_EQ(result, expected)
                        << pair.inputChannels << " to " << pair.outputChannels << ", code " << code << ", "
                        << frames << " frames at " << shift;
                }
            }
        }
    }
}

// ---- the choice

TEST(PcmMixesChoice, EqualAndOtherNumbersPassThrough) {
    for (std::uint32_t from = 0; from < 9; ++from) {
        for (std::uint32_t to = 0; to < 9; ++to) {
            const auto isMixed = [](std::uint32_t count) { return count == 1 || count == 2 || count == 6; };
            for (std::uint32_t code = 0; code < 7; ++code) {
                const bool hasRoutine = from != to && isMixed(from) && isMixed(to) && code < 4;
                EXPECT_EQ(pcm::FindMix(from, to, code) != nullptr, hasRoutine)
                    << from << " to " << to << ", code " << code;
            }
            EXPECT_EQ(pcm::FindMix(from, to, 0xFFFFFFFF), nullptr);
        }
    }
}

TEST(PcmMixesChoice, TheLastSupportedSetWithARoutineIsTaken) {
    for (const TMixPair pair : pcm::kMixPairs) {
        for (std::uint32_t code = 0; code < pcm::kMixFormatCount; ++code) {
            pcm::TRoutine last = nullptr;
            for (const TMixSet* set : SupportedSets()) {
                const auto own = pcm::FindMix(*set, pair.inputChannels, pair.outputChannels, code);
                if (own) last = own;
            }
            EXPECT_EQ(pcm::FindMix(pair.inputChannels, pair.outputChannels, code), last);
        }
    }
}

TEST(PcmMixesChoice, TheReferenceIsComplete) {
    ASSERT_EQ(pcm::GetMixSets()[0], &pcm::kScalarMixes);
    EXPECT_TRUE(pcm::kScalarMixes.isSupported());
    for (const auto& byFormat : pcm::kScalarMixes.routines)
        for (const pcm::TRoutine routine : byFormat) EXPECT_NE(routine, nullptr);
}

// ---- results known by hand

template <class TSample> std::vector<TSample> MixByChoice(TMixPair pair, const std::vector<TSample>& in) {
    std::vector<TSample> out(in.size() / pair.inputChannels * pair.outputChannels);
    pcm::FindMix(pair.inputChannels, pair.outputChannels, kCode<TSample>)(out.data(), in.data(),
                                                                          in.size() / pair.inputChannels);
    return out;
}

TEST(PcmMixesResults, TermsAreDividedBeforeTheSum) {
    using T16 = std::vector<std::int16_t>;
    using T8 = std::vector<std::uint8_t>;
    EXPECT_EQ(MixByChoice<std::int16_t>({2, 1}, {1000, -1001}), (T16{0}));
    EXPECT_EQ(MixByChoice<std::int16_t>({6, 2}, {100, 200, 40, 4, 8, 12}), (T16{38, 64}));
    EXPECT_EQ(MixByChoice<std::uint8_t>({2, 6}, {1, 2}), (T8{1, 2, 0x80, 0x80, 0x80, 0x80}));
    EXPECT_EQ(MixByChoice<std::int16_t>({2, 6}, {1, 2}), (T16{1, 2, 0, 0, 0, 0}));
    EXPECT_EQ(MixByChoice<std::uint8_t>({6, 1}, T8(6, 0x80)), (T8{0x7E}));
    EXPECT_EQ(MixByChoice<std::uint8_t>({6, 2}, T8(6, 0x80)), (T8{0x80, 0x80}));
    EXPECT_EQ(MixByChoice<std::uint8_t>({2, 1}, {0xFF, 0xFF}), (T8{0xFE}));
    EXPECT_EQ(MixByChoice<std::int16_t>({6, 1}, {5, 5, 5, 5, 5, 5}), (T16{0}));
    EXPECT_EQ(MixByChoice<float>({6, 1}, {6, 6, 6, 6, 6, 6}), (std::vector<float>{6}));
    EXPECT_EQ(MixByChoice<float>({2, 1}, {0x1.FFFFFEp127F, 0x1.FFFFFEp127F}),
              (std::vector<float>{0x1.FFFFFEp127F}));
}

} // namespace
