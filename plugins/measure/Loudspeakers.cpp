#include "Loudspeakers.h"

#include <array>
#include <cstddef>

#include <ebur128.h>

namespace {

constexpr std::uint32_t kBack = 0x30;
constexpr std::uint32_t kSides = 0x600;

// The bits of a channel mask (Microsoft, "Multiple Channel Audio Data and WAVE Files") as positions of ITU-R
// BS.2051.
constexpr std::array<int, 18> kPositions{
    EBUR128_Mp030, EBUR128_Mm030, EBUR128_Mp000, EBUR128_UNUSED, EBUR128_Mp110, EBUR128_Mm110,
    EBUR128_MpSC,  EBUR128_MmSC,  EBUR128_Mp180, EBUR128_Mp110,  EBUR128_Mm110, EBUR128_Tp000,
    EBUR128_Up030, EBUR128_Up000, EBUR128_Um030, EBUR128_Up135,  EBUR128_Up180, EBUR128_Um135,
};

// What is usual for 1 to 8 channels.
constexpr std::array<std::uint32_t, 8> kUsualMasks{0x4, 0x3, 0x7, 0x33, 0x37, 0x3F, 0x70F, 0x63F};

int GetPosition(std::size_t bit, std::uint32_t mask) {
    const bool hasBoth = (mask & kBack) == kBack && (mask & kSides) == kSides;
    if (hasBoth) {
        // Beside loudspeakers at the sides, those in the back stand further back, where they count as the
        // front does.
        if (bit == 4) return EBUR128_Mp135;
        if (bit == 5) return EBUR128_Mm135;
        if (bit == 9) return EBUR128_Mp090;
        if (bit == 10) return EBUR128_Mm090;
    }
    return kPositions[bit];
}

} // namespace

std::vector<int> GetPositions(std::uint32_t channels, std::uint32_t mask) {
    if (mask == 0 && channels <= kUsualMasks.size()) mask = kUsualMasks[channels - 1];
    std::vector<int> positions;
    positions.reserve(channels);
    for (std::size_t bit = 0; bit < kPositions.size() && positions.size() < channels; ++bit) {
        if (mask >> bit & 1) positions.push_back(GetPosition(bit, mask));
    }
    positions.resize(channels, EBUR128_Mp000);
    return positions;
}
