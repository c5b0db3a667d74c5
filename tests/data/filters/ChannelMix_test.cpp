// Layouts, and the matrices between them.
#include "support/Failures.h"

#include <vorlund/ChannelMix.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace vorlund::test {
namespace {

constexpr double kRoot = 0.70710678118654752440;

using TRows = std::vector<std::vector<double>>;

TRows RowsOf(const TMixMatrix& matrix) {
    TRows rows;
    for (std::uint32_t to = 0; to < matrix.outputs; ++to)
        rows.emplace_back(matrix.weights[to], matrix.weights[to] + matrix.inputs);
    return rows;
}

TEST(ChannelMix, LayoutsHaveTheirChannels) {
    EXPECT_EQ(GetChannelCount(0), 0u);
    EXPECT_EQ(GetChannelCount(~0U), 32u);
    for (std::uint32_t channels = 1; channels <= kMaxMixChannels; ++channels)
        EXPECT_EQ(GetChannelCount(GetDefaultLayout(channels)), channels);
    for (const std::uint32_t channels : {0U, 9U, ~0U}) EXPECT_EQ(GetDefaultLayout(channels), 0u) << channels;
    EXPECT_EQ(GetDefaultLayout(6), std::uint32_t{CHANNEL_LAYOUT_5_1});
}

TEST(ChannelMix, DefaultMatrices) {
    struct TRow {
        std::uint32_t from;
        std::uint32_t to;
        TRows weights;
    };
    const TRow rows[] = {
        {CHANNEL_LAYOUT_STEREO, CHANNEL_LAYOUT_STEREO, {{1, 0}, {0, 1}}},
        {CHANNEL_LAYOUT_MONO, CHANNEL_LAYOUT_STEREO, {{1}, {1}}},
        {CHANNEL_LAYOUT_MONO, CHANNEL_LAYOUT_5_1, {{0}, {0}, {1}, {0}, {0}, {0}}},
        {CHANNEL_LAYOUT_MONO, CHANNEL_SIDE_LEFT | CHANNEL_SIDE_RIGHT, {{0}, {0}}},
        {CHANNEL_LAYOUT_STEREO, CHANNEL_LAYOUT_MONO, {{kRoot, kRoot}}},
        {CHANNEL_LAYOUT_STEREO, CHANNEL_LAYOUT_5_1, {{1, 0}, {0, 1}, {0, 0}, {0, 0}, {0, 0}, {0, 0}}},
        {CHANNEL_LAYOUT_3_0, CHANNEL_LAYOUT_STEREO, {{1, 0, kRoot}, {0, 1, kRoot}}},
        {CHANNEL_LAYOUT_3_0, CHANNEL_LAYOUT_MONO, {{kRoot, kRoot, 1}}},
        {CHANNEL_LAYOUT_4_0, CHANNEL_LAYOUT_STEREO, {{1, 0, kRoot, 0.5}, {0, 1, kRoot, 0.5}}},
        {CHANNEL_LAYOUT_4_0, CHANNEL_LAYOUT_MONO, {{kRoot, kRoot, 1, kRoot}}},
        {CHANNEL_LAYOUT_QUAD, CHANNEL_LAYOUT_STEREO, {{1, 0, kRoot, 0}, {0, 1, 0, kRoot}}},
        {CHANNEL_LAYOUT_5_0_SIDE, CHANNEL_LAYOUT_STEREO, {{1, 0, kRoot, kRoot, 0}, {0, 1, kRoot, 0, kRoot}}},
        {CHANNEL_LAYOUT_5_0_SIDE, CHANNEL_LAYOUT_MONO, {{kRoot, kRoot, 1, 0.5, 0.5}}},
        {CHANNEL_LAYOUT_5_0, CHANNEL_LAYOUT_3_0, {{1, 0, 0, kRoot, 0}, {0, 1, 0, 0, kRoot}, {0, 0, 1, 0, 0}}},
        {CHANNEL_LAYOUT_5_0,
         CHANNEL_LAYOUT_4_0,
         {{1, 0, 0, 0, 0}, {0, 1, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 0, kRoot, kRoot}}},
        {CHANNEL_LAYOUT_5_1, CHANNEL_LAYOUT_STEREO, {{1, 0, kRoot, 0, kRoot, 0}, {0, 1, kRoot, 0, 0, kRoot}}},
        {CHANNEL_LAYOUT_5_1, CHANNEL_LAYOUT_MONO, {{kRoot, kRoot, 1, 0, 0.5, 0.5}}},
        {CHANNEL_LAYOUT_7_1,
         CHANNEL_LAYOUT_STEREO,
         {{1, 0, kRoot, 0, kRoot, 0, kRoot, 0}, {0, 1, kRoot, 0, 0, kRoot, 0, kRoot}}},
        {CHANNEL_LAYOUT_QUAD, 0x603, {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}},
        {CHANNEL_FRONT_LEFT_OF_CENTRE | CHANNEL_FRONT_RIGHT_OF_CENTRE | CHANNEL_TOP_CENTRE,
         CHANNEL_LAYOUT_STEREO,
         {{1, 0, 0}, {0, 1, 0}}},
    };
    for (const TRow& row : rows)
        EXPECT_EQ(RowsOf(MakeMixMatrix(row.from, row.to)), row.weights) << row.from << " to " << row.to;
}

TEST(ChannelMix, EightChannelsGoIntoSix) {
    const TRows rows = RowsOf(MakeMixMatrix(CHANNEL_LAYOUT_7_1, CHANNEL_LAYOUT_5_1));
    const TRows expected = {{1, 0, 0, 0, 0, 0, 0, 0}, {0, 1, 0, 0, 0, 0, 0, 0}, {0, 0, 1, 0, 0, 0, 0, 0},
                            {0, 0, 0, 1, 0, 0, 0, 0}, {0, 0, 0, 0, 1, 0, 1, 0}, {0, 0, 0, 0, 0, 1, 0, 1}};
    EXPECT_EQ(rows, expected);
}

TEST(ChannelMix, TheSafeLevelKeepsWithinFullScale) {
    for (std::uint32_t from = 1; from <= kMaxMixChannels; ++from) {
        for (std::uint32_t to = 1; to <= kMaxMixChannels; ++to) {
            const std::uint32_t source = GetDefaultLayout(from);
            const TRows standard = RowsOf(MakeMixMatrix(source, GetDefaultLayout(to)));
            const TRows safe = RowsOf(MakeMixMatrix(source, GetDefaultLayout(to), MIX_LEVEL_SAFE));
            double most = 1;
            for (const auto& row : standard) {
                double sum = 0;
                for (const double weight : row) sum += weight;
                most = std::max(most, sum);
            }
            for (std::size_t i = 0; i < standard.size(); ++i)
                for (std::size_t j = 0; j < standard[i].size(); ++j)
                    EXPECT_DOUBLE_EQ(safe[i][j] * most, standard[i][j]) << from << " to " << to;
        }
    }
}

TEST(ChannelMix, Raises) {
    const TFailure failure{VRL_L("vorlund::MakeMixMatrix"), VRL_L("src/vorlund/data/filters/ChannelMix"), 1,
                           VRL_L("A layout must have 1 to 8 channels")};
    const std::pair<std::uint32_t, std::uint32_t> pairs[] = {{0, CHANNEL_LAYOUT_MONO},
                                                             {CHANNEL_LAYOUT_MONO, 0},
                                                             {0x1FF, CHANNEL_LAYOUT_MONO},
                                                             {CHANNEL_LAYOUT_MONO, 0x1FF}};
    for (const auto& [from, to] : pairs)
        ExpectRaises<CInvalidParameterException>(failure,
                                                 [from = from, to = to] { MakeMixMatrix(from, to); });
}

} // namespace
} // namespace vorlund::test
