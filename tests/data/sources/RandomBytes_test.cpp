// Every set of random bytes against the rule: every length around the block sizes, every alignment, states
// that wrap.
#include "vorlund/data/sources/RandomBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

constexpr std::uint8_t kUntouched = 0xA5;

std::vector<const TRandomSet*> SupportedSets() {
    std::vector<const TRandomSet*> sets;
    for (const TRandomSet* set : GetRandomSets())
        if (set->isSupported()) sets.push_back(set);
    return sets;
}

/// Each supported set in turn; the name of the test says which one ran.
class RandomBytes : public testing::TestWithParam<const TRandomSet*> {};

INSTANTIATE_TEST_SUITE_P(Sets, RandomBytes, testing::ValuesIn(SupportedSets()),
                         [](const auto& set) { return std::string(set.param->name); });

TEST_P(RandomBytes, EveryLengthAndAlignment) {
    for (const std::uint32_t seed : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        for (std::size_t count = 0; count < 150; ++count) {
            const std::size_t shift = count % 33;
            std::vector<std::uint8_t> expected(shift + count + 32, kUntouched);
            std::vector<std::uint8_t> bytes = expected;
            std::uint32_t state = seed;
            for (std::size_t i = 0; i < count; ++i) {
                state = state * 214013 + 2531011;
                expected[shift + i] = static_cast<std::uint8_t>(state >> 16);
            }
            ASSERT_EQ(GetParam()->routines(seed, bytes.data() + shift, count), state) << count;
            ASSERT_EQ(bytes, expected) << seed << ", " << count << " bytes";
        }
    }
}

TEST_P(RandomBytes, PiecesJoin) {
    std::vector<std::uint8_t> whole(5000);
    const std::uint32_t last = GetParam()->routines(7, whole.data(), whole.size());
    std::vector<std::uint8_t> pieces(whole.size());
    std::uint32_t state = 7;
    for (std::size_t at = 0, size = 1; at < pieces.size(); at += size, ++size) {
        size = std::min(size, pieces.size() - at);
        state = GetParam()->routines(state, pieces.data() + at, size);
    }
    EXPECT_EQ(pieces, whole);
    EXPECT_EQ(state, last);
}

TEST(RandomByteSets, TheReferenceComesFirst) {
    ASSERT_EQ(GetRandomSets().front(), &kScalarRandom);
    EXPECT_TRUE(kScalarRandom.isSupported());
}

TEST(RandomByteSets, TheLastSupportedSetIsInUse) {
    EXPECT_EQ(randomKernels, SupportedSets().back());
    std::uint8_t byte = 0;
    EXPECT_EQ(WriteRandomBytes(0, &byte, 1), 2531011u);
    EXPECT_EQ(byte, 2531011u >> 16);
}

} // namespace
} // namespace vorlund::test
