// Samples as doubles: the plain set against the rules, and every other set against the plain one.
#include "data/filters/PcmConverterSource.h"

#include "vorlund/data/filters/PcmReals.h"

#include <vorlund/AudioConversion.h>

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>

namespace vorlund::test {
namespace {

using pcm::GetRealsSets;
using pcm::kRealsCount;

constexpr std::size_t kSizes[] = {1, 2, 4, 4, 3};

/// Samples of all kinds; every one of 8 and of 16 bits, and floats that are no numbers.
TBytes MakeSamples(std::uint32_t format, std::size_t count) {
    std::mt19937 random(3);
    TBytes bytes(count * kSizes[format]);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t pattern = kSizes[format] < 3       ? static_cast<std::uint32_t>(i)
                                      : format == 3 && i < 256 ? 0xFF800000U + static_cast<std::uint32_t>(i)
                                                               : static_cast<std::uint32_t>(random());
        for (std::size_t byte = 0; byte < kSizes[format]; ++byte)
            bytes[i * kSizes[format] + byte] = static_cast<std::uint8_t>(pattern >> 8 * byte);
    }
    return bytes;
}

double Expected(std::uint32_t format, const std::uint8_t* sample) {
    switch (format) {
    case 0:
        return (*sample - 128) / 128.0;
    case 1:
        return static_cast<std::int16_t>(sample[0] | sample[1] << 8) / 32768.0;
    case 3: {
        float value;
        std::memcpy(&value, sample, sizeof value);
        return value;
    }
    default: {
        std::uint8_t wide[4] = {};
        std::memcpy(wide + (4 - kSizes[format]), sample, kSizes[format]);
        std::int32_t value;
        std::memcpy(&value, wide, sizeof value);
        return value / 2147483648.0;
    }
    }
}

TEST(PcmReals, DoublesFollowTheRules) {
    for (std::uint32_t format = 0; format < 5; ++format) {
        constexpr std::size_t kCount = 70000;
        const TBytes samples = MakeSamples(format, kCount);
        std::vector<double> reals(kCount);
        ConvertToDoubles(reals.data(), samples.data(), format, kCount);
        for (std::size_t i = 0; i < kCount; ++i) {
            const double expected = Expected(format, samples.data() + i * kSizes[format]);
            if (std::isnan(expected)) {
                ASSERT_TRUE(std::isnan(reals[i])) << format << ", sample " << i;
            } else {
                ASSERT_EQ(reals[i], expected) << format << ", sample " << i;
                ASSERT_EQ(std::signbit(reals[i]), std::signbit(expected)) << format << ", sample " << i;
            }
        }
    }
}

TEST(PcmReals, EverySetGivesTheSameBitsForAnyLengthAndAlignment) {
    constexpr std::size_t kMost = 70;
    ASSERT_TRUE(GetRealsSets()[0]->isSupported());
    for (std::uint32_t format = 0; format < kRealsCount; ++format) {
        const std::size_t size = kSizes[format];
        const TBytes samples = MakeSamples(format, 300 + kMost);
        for (const pcm::TRealsSet* set : GetRealsSets()) {
            ASSERT_NE(set->routines[0][format], nullptr) << set->name;
            if (!set->isSupported()) continue;
            for (std::size_t count = 0; count <= kMost; ++count) {
                const std::size_t shift = count % 5;
                // The source ends with its last sample, where the address sanitizer watches.
                TBytes source(samples.end() - static_cast<std::ptrdiff_t>(count * size + shift),
                              samples.end());
                TBytes expected(count * 8 + 16, kUnwritten);
                TBytes output(expected);
                GetRealsSets()[0]->routines[0][format](expected.data() + shift, source.data() + shift, count);
                set->routines[0][format](output.data() + shift, source.data() + shift, count);
                ASSERT_TRUE(output == expected) << set->name << ", format " << format << ", " << count;
            }
        }
        const auto* const fastest = &FindFastestSet(GetRealsSets());
        EXPECT_EQ(pcm::FindReals(format), fastest->routines[0][format]);
    }
}

} // namespace
} // namespace vorlund::test
