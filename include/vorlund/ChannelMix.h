/// \file
/// Layouts of up to eight channels, and the matrices that mix one into another.
///
/// A layout is a mask: one bit for each loudspeaker, as in the mask of extensible WAV files. The channels of
/// a frame come in the order of the bits, the lowest first.
#pragma once

#include <vorlund/Platform.h>

#include <cstdint>

namespace vorlund {

/// Loudspeakers, the bits of a layout. Since version 0.1.
enum TChannel : std::uint32_t {
    CHANNEL_FRONT_LEFT = 0x1,
    CHANNEL_FRONT_RIGHT = 0x2,
    CHANNEL_FRONT_CENTRE = 0x4,
    CHANNEL_LOW_FREQUENCY = 0x8,
    CHANNEL_BACK_LEFT = 0x10,
    CHANNEL_BACK_RIGHT = 0x20,
    CHANNEL_FRONT_LEFT_OF_CENTRE = 0x40,
    CHANNEL_FRONT_RIGHT_OF_CENTRE = 0x80,
    CHANNEL_BACK_CENTRE = 0x100,
    CHANNEL_SIDE_LEFT = 0x200,
    CHANNEL_SIDE_RIGHT = 0x400,
    CHANNEL_TOP_CENTRE = 0x800,
    CHANNEL_TOP_FRONT_LEFT = 0x1000,
    CHANNEL_TOP_FRONT_CENTRE = 0x2000,
    CHANNEL_TOP_FRONT_RIGHT = 0x4000,
    CHANNEL_TOP_BACK_LEFT = 0x8000,
    CHANNEL_TOP_BACK_CENTRE = 0x10000,
    CHANNEL_TOP_BACK_RIGHT = 0x20000
};

/// Common layouts. Since version 0.1.
enum TChannelLayout : std::uint32_t {
    CHANNEL_LAYOUT_MONO = 0x4,
    CHANNEL_LAYOUT_STEREO = 0x3,
    CHANNEL_LAYOUT_2_1 = 0xB,
    CHANNEL_LAYOUT_3_0 = 0x7,
    CHANNEL_LAYOUT_QUAD = 0x33,
    CHANNEL_LAYOUT_4_0 = 0x107,
    CHANNEL_LAYOUT_5_0 = 0x37,
    CHANNEL_LAYOUT_5_0_SIDE = 0x607,
    CHANNEL_LAYOUT_5_1 = 0x3F, ///< with back channels, as `IAudioPcmChannelNumberConverter` has them
    CHANNEL_LAYOUT_5_1_SIDE = 0x60F,
    CHANNEL_LAYOUT_6_1 = 0x70F,
    CHANNEL_LAYOUT_7_1 = 0x63F
};

/// The most channels of a layout that is mixed. Since version 0.1.
constexpr std::uint32_t kMaxMixChannels = 8;

/// The number of channels of a layout. Since version 0.1.
constexpr std::uint32_t GetChannelCount(std::uint32_t layout) {
    std::uint32_t count = 0;
    for (; layout != 0; layout &= layout - 1) ++count;
    return count;
}

/// The layout that a number of channels has where nothing tells it: mono, stereo, 3.0, quad, 5.0, 5.1, 6.1
/// and 7.1; 0 for other numbers. Raises nothing, any thread. Since version 0.1.
VRL_API std::uint32_t GetDefaultLayout(std::uint32_t channels) noexcept;

/// What each channel of the output takes of each channel of the input. Since version 0.1.
struct TMixMatrix {
    /// Channels, 1 to `kMaxMixChannels`.
    std::uint32_t inputs = 0;
    std::uint32_t outputs = 0;
    /// `weights[output][input]`, finite. An input of weight 0 takes no part in that output, whatever it
    /// holds.
    double weights[kMaxMixChannels][kMaxMixChannels] = {};
};

/// The level of a matrix that `MakeMixMatrix` makes. Since version 0.1.
enum TMixLevel : std::uint32_t {
    /// The weights as they are: loud channels may add up to more than full scale.
    MIX_LEVEL_STANDARD = 0,
    /// All weights are lowered by one factor, so that inputs within full scale give outputs within it.
    MIX_LEVEL_SAFE = 1
};

/// The matrix from one layout to another.
///
/// A channel that both have passes unchanged. What the output lacks is given to the nearest channels that it
/// has, with the weights of ITU-R BS.775: 0.7071 (the root of one half) of the centre to left and right,
/// 0.7071 of a surround channel to the front of its side, 0.5 of one surround channel to both fronts. Into
/// one channel, left and right give 0.7071, the centre 1 and the surrounds 0.5. The low-frequency channel is
/// left out where the output has none, and so are the top channels.
///
/// Nothing is made up for channels that only the output has: they are silent. Only mono, where the output has
/// left and right but no centre, goes to both with weight 1.
///
/// \param from, to  masks of 1 to `kMaxMixChannels` channels
/// \param level     whether loud channels may add up to more than full scale
///
/// Raises `CInvalidParameterException` "A layout must have 1 to 8 channels". Any thread. Since version 0.1.
VRL_API TMixMatrix MakeMixMatrix(std::uint32_t from, std::uint32_t to, TMixLevel level = MIX_LEVEL_STANDARD);

} // namespace vorlund
