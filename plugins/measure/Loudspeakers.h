// Where the channels are, which decides how much they count in loudness.
#pragma once

#include <cstdint>
#include <vector>

/// A position of libebur128 for each channel. `mask` as in `TAudioMeterSettings::channelMask`.
std::vector<int> GetPositions(std::uint32_t channels, std::uint32_t mask);
