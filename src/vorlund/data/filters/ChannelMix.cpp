// The default matrices: every channel that the output lacks is given to the first group of channels that it
// has.
#include <vorlund/ChannelMix.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <bit>
#include <initializer_list>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/filters/ChannelMix");
constexpr TFailure kBadLayout{VRL_L("vorlund::MakeMixMatrix"), kFile, 1,
                              VRL_L("A layout must have 1 to 8 channels")};

constexpr double kRootOfHalf = 0.70710678118654752440;

/// Where a channel goes: the first row whose channels the output has.
struct TDestination {
    std::uint32_t channel;
    std::uint32_t outputs;
    double weight;
};

constexpr std::uint32_t kFronts = CHANNEL_FRONT_LEFT | CHANNEL_FRONT_RIGHT;
constexpr std::uint32_t kBacks = CHANNEL_BACK_LEFT | CHANNEL_BACK_RIGHT;
constexpr std::uint32_t kSides = CHANNEL_SIDE_LEFT | CHANNEL_SIDE_RIGHT;

constexpr TDestination kDestinations[] = {
    {CHANNEL_FRONT_LEFT, CHANNEL_FRONT_CENTRE, kRootOfHalf},
    {CHANNEL_FRONT_RIGHT, CHANNEL_FRONT_CENTRE, kRootOfHalf},
    {CHANNEL_FRONT_CENTRE, kFronts, kRootOfHalf},
    {CHANNEL_FRONT_LEFT_OF_CENTRE, CHANNEL_FRONT_LEFT, 1},
    {CHANNEL_FRONT_LEFT_OF_CENTRE, CHANNEL_FRONT_CENTRE, kRootOfHalf},
    {CHANNEL_FRONT_RIGHT_OF_CENTRE, CHANNEL_FRONT_RIGHT, 1},
    {CHANNEL_FRONT_RIGHT_OF_CENTRE, CHANNEL_FRONT_CENTRE, kRootOfHalf},
    {CHANNEL_BACK_LEFT, CHANNEL_SIDE_LEFT, 1},
    {CHANNEL_BACK_LEFT, CHANNEL_BACK_CENTRE, kRootOfHalf},
    {CHANNEL_BACK_LEFT, CHANNEL_FRONT_LEFT, kRootOfHalf},
    {CHANNEL_BACK_LEFT, CHANNEL_FRONT_CENTRE, 0.5},
    {CHANNEL_BACK_RIGHT, CHANNEL_SIDE_RIGHT, 1},
    {CHANNEL_BACK_RIGHT, CHANNEL_BACK_CENTRE, kRootOfHalf},
    {CHANNEL_BACK_RIGHT, CHANNEL_FRONT_RIGHT, kRootOfHalf},
    {CHANNEL_BACK_RIGHT, CHANNEL_FRONT_CENTRE, 0.5},
    {CHANNEL_BACK_CENTRE, kBacks, kRootOfHalf},
    {CHANNEL_BACK_CENTRE, kSides, kRootOfHalf},
    {CHANNEL_BACK_CENTRE, kFronts, 0.5},
    {CHANNEL_BACK_CENTRE, CHANNEL_FRONT_CENTRE, kRootOfHalf},
    {CHANNEL_SIDE_LEFT, CHANNEL_BACK_LEFT, 1},
    {CHANNEL_SIDE_LEFT, CHANNEL_BACK_CENTRE, kRootOfHalf},
    {CHANNEL_SIDE_LEFT, CHANNEL_FRONT_LEFT, kRootOfHalf},
    {CHANNEL_SIDE_LEFT, CHANNEL_FRONT_CENTRE, 0.5},
    {CHANNEL_SIDE_RIGHT, CHANNEL_BACK_RIGHT, 1},
    {CHANNEL_SIDE_RIGHT, CHANNEL_BACK_CENTRE, kRootOfHalf},
    {CHANNEL_SIDE_RIGHT, CHANNEL_FRONT_RIGHT, kRootOfHalf},
    {CHANNEL_SIDE_RIGHT, CHANNEL_FRONT_CENTRE, 0.5},
};

/// Visits the channels of a layout: their bits and their places in a frame.
template <class TVisit> void ForEachChannel(std::uint32_t layout, TVisit visit) {
    for (std::uint32_t place = 0; layout != 0; layout &= layout - 1, ++place)
        visit(std::uint32_t{1} << std::countr_zero(layout), place);
}

void GiveAway(TMixMatrix& matrix, std::uint32_t input, std::uint32_t to, std::uint32_t outputs,
              double weight) {
    ForEachChannel(to, [&](std::uint32_t channel, std::uint32_t place) {
        if (channel & outputs) matrix.weights[place][input] = weight;
    });
}

/// By what the loudest output could go beyond full scale.
void LowerToSafety(TMixMatrix& matrix) {
    double most = 1;
    for (const auto& row : matrix.weights) {
        double sum = 0;
        for (const double weight : row) sum += weight;
        most = std::max(most, sum);
    }
    for (auto& row : matrix.weights)
        for (double& weight : row) weight /= most;
}

} // namespace

std::uint32_t GetDefaultLayout(std::uint32_t channels) noexcept {
    constexpr std::uint32_t kLayouts[] = {0,
                                          CHANNEL_LAYOUT_MONO,
                                          CHANNEL_LAYOUT_STEREO,
                                          CHANNEL_LAYOUT_3_0,
                                          CHANNEL_LAYOUT_QUAD,
                                          CHANNEL_LAYOUT_5_0,
                                          CHANNEL_LAYOUT_5_1,
                                          CHANNEL_LAYOUT_6_1,
                                          CHANNEL_LAYOUT_7_1};
    return channels <= kMaxMixChannels ? kLayouts[channels] : 0;
}

TMixMatrix MakeMixMatrix(std::uint32_t from, std::uint32_t to, TMixLevel level) {
    TMixMatrix matrix{GetChannelCount(from), GetChannelCount(to)};
    for (const std::uint32_t count : {matrix.inputs, matrix.outputs})
        if (count == 0 || count > kMaxMixChannels) Raise<CInvalidParameterException>(kBadLayout);

    ForEachChannel(from, [&](std::uint32_t channel, std::uint32_t input) {
        if (channel & to) return GiveAway(matrix, input, to, channel, 1);
        if (from == CHANNEL_LAYOUT_MONO && (to & kFronts) == kFronts)
            return GiveAway(matrix, input, to, kFronts, 1);
        for (const TDestination& row : kDestinations) {
            if (row.channel != channel || (row.outputs & to) != row.outputs) continue;
            return GiveAway(matrix, input, to, row.outputs, row.weight);
        }
    });
    if (level == MIX_LEVEL_SAFE) LowerToSafety(matrix);
    return matrix;
}

} // namespace vorlund
