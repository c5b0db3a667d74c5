// The inverse of the equations that tools/vorlund/Y4mFrames.cpp quotes: in BT.601 the luma of red is 0.299,
// that of blue 0.114, and chroma is the difference of a colour and the luma, scaled to half of the range.
// Integers with 16 fractional bits.
#include "Y4mColours.h"

#include <algorithm>
#include <cstring>

namespace {

struct TColourScale {
    int lumaOffset;
    int luma;
    int redOfRed;
    int greenOfRed;
    int greenOfBlue;
    int blueOfBlue;
};

/// `value` with 16 fractional bits.
constexpr int Fixed(double value) {
    return static_cast<int>(value * 65536 + (value < 0 ? -0.5 : 0.5));
}

constexpr TColourScale MakeScale(int lumaOffset, double luma, double chroma) {
    constexpr double kRed = 0.299;
    constexpr double kBlue = 0.114;
    constexpr double kGreen = 1 - kRed - kBlue;
    return {lumaOffset,
            Fixed(luma),
            Fixed(chroma * 2 * (1 - kRed)),
            Fixed(-chroma * 2 * (1 - kRed) * kRed / kGreen),
            Fixed(-chroma * 2 * (1 - kBlue) * kBlue / kGreen),
            Fixed(chroma * 2 * (1 - kBlue))};
}

constexpr TColourScale kStudio = MakeScale(16, 255.0 / 219, 255.0 / 224);
constexpr TColourScale kFull = MakeScale(0, 1, 1);

std::uint32_t Cut(int value) {
    return static_cast<std::uint32_t>(std::clamp(value >> 16, 0, 255));
}

/// What a pair of chroma samples adds to red, green and blue, with the rounding.
struct TChroma {
    int red;
    int green;
    int blue;
};

TChroma MakeChroma(const TColourScale& scale, int blueDifference, int redDifference) {
    constexpr int kHalf = 1 << 15;
    const int blue = blueDifference - 128;
    const int red = redDifference - 128;
    return {scale.redOfRed * red + kHalf, scale.greenOfRed * red + scale.greenOfBlue * blue + kHalf,
            scale.blueOfBlue * blue + kHalf};
}

std::uint32_t MakePixel(const TColourScale& scale, int luma, const TChroma& chroma, std::uint32_t alpha) {
    const int light = (luma - scale.lumaOffset) * scale.luma;
    return alpha << 24 | Cut(light + chroma.red) << 16 | Cut(light + chroma.green) << 8 |
           Cut(light + chroma.blue);
}

} // namespace

void ConvertY4mFrame(const TY4mHeader& header, const std::uint8_t* planes, std::uint8_t* pixels) {
    const TColourScale& scale = header.isFullRange ? kFull : kStudio;
    const std::size_t count = static_cast<std::size_t>(header.GetPixels());
    const std::size_t chromaWidth = header.GetChromaWidth();
    const std::size_t chromaCount = chromaWidth * header.GetChromaHeight();
    const std::uint8_t* luma = planes;
    const std::uint8_t* const blues = planes + count;
    const std::uint8_t* const reds = blues + chromaCount;
    const std::uint8_t* alpha = reds + chromaCount;
    TChroma chroma = MakeChroma(scale, 128, 128);
    const std::uint32_t inside = (1u << header.layout.chromaShiftX) - 1;
    for (std::uint32_t y = 0; y < header.height; ++y) {
        const std::size_t row = (y >> header.layout.chromaShiftY) * chromaWidth;
        for (std::uint32_t x = 0; x < header.width; ++x) {
            if (header.layout.hasChroma && (x & inside) == 0) {
                const std::size_t at = row + (x >> header.layout.chromaShiftX);
                chroma = MakeChroma(scale, blues[at], reds[at]);
            }
            const std::uint32_t pixel =
                MakePixel(scale, *luma++, chroma, header.layout.hasAlpha ? *alpha++ : 0xFFu);
            std::memcpy(pixels, &pixel, sizeof pixel);
            pixels += sizeof pixel;
        }
    }
}
