// The picture of a sound that "info" draws.
#include "cli/DecodeCommand.h"
#include "cli/PngReader.h"

#include <cmath>
#include <memory>
#include <numbers>

namespace vorlund::test {
namespace {

struct TFree {
    void operator()(stbi_uc* image) const { stbi_image_free(image); }
};

/// A picture that was read.
struct TPicture {
    int width = 0;
    int height = 0;
    std::unique_ptr<stbi_uc, TFree> rgb;

    std::uint32_t At(int x, int y) const {
        const stbi_uc* const pixel = rgb.get() + 3 * (y * width + x);
        return static_cast<std::uint32_t>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]);
    }
    int Brightness(int x, int y) const {
        const std::uint32_t pixel = At(x, y);
        return static_cast<int>((pixel >> 16) + (pixel >> 8 & 255) + (pixel & 255));
    }
};

// As the program draws: the left edge of both diagrams, their width, the lane of a single channel and the
// spectrogram.
constexpr int kLeft = 90;
constexpr int kColumns = 1000;
constexpr int kLaneTop = 40;
constexpr int kLaneHeight = 240;
constexpr int kSpectrumTop = 300;
constexpr int kSpectrumHeight = 400;
constexpr std::uint32_t kWave = 0x1F62A3;

class InfoPicture : public DecodeCommand {
protected:
    TPicture Draw(const TBytes& wav) const {
        const TChildEnd end = Run({"info", "--picture", At("p.png"), Make("p.wav", wav)});
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        const TBytes file = Load("p.png");
        TPicture picture;
        int channels = 0;
        picture.rgb.reset(stbi_load_from_memory(file.data(), static_cast<int>(file.size()), &picture.width,
                                                &picture.height, &channels, 3));
        EXPECT_NE(picture.rgb, nullptr);
        return picture;
    }
};

TBytes Sine(double hertz, double level, std::size_t frames, std::uint32_t rate) {
    TBytes bytes;
    for (std::size_t i = 0; i < frames; ++i) {
        const double sine = std::sin(2 * std::numbers::pi * hertz * static_cast<double>(i) / rate);
        Append16(bytes, static_cast<std::uint32_t>(std::lround(32767 * level * sine)));
    }
    return bytes;
}

TEST_F(InfoPicture, ASineIsABandAndALine) {
    const TPicture picture = Draw(PlainWav({.samplesPerSec = 8000}, Sine(1000, 0.5, 16000, 8000)));
    ASSERT_EQ(picture.width, 1200);
    ASSERT_EQ(picture.height, kSpectrumTop + kSpectrumHeight + 60);
    for (const int column : {kLeft + 3, kLeft + 500, kLeft + kColumns - 4}) {
        // From -0.5 to 0.5 of the lane.
        const int middle = kLaneTop + kLaneHeight / 2;
        EXPECT_EQ(picture.At(column, middle - kLaneHeight / 4 + 4), kWave);
        EXPECT_EQ(picture.At(column, middle + kLaneHeight / 4 - 4), kWave);
        EXPECT_NE(picture.At(column, middle - kLaneHeight / 4 - 4), kWave);
        EXPECT_NE(picture.At(column, middle + kLaneHeight / 4 + 4), kWave);
        // A quarter of the range up to 4,000 Hz.
        int brightest = 0;
        for (int row = 0; row < kSpectrumHeight; ++row) {
            if (picture.Brightness(column, kSpectrumTop + row) >
                picture.Brightness(column, kSpectrumTop + brightest))
                brightest = row;
        }
        EXPECT_NEAR(brightest, kSpectrumHeight * 3 / 4, 2);
    }
    // Away from the beginning and the end, which are sudden.
    EXPECT_LT(picture.Brightness(kLeft + 500, kSpectrumTop + 50), 60);
    // Labels on three sides, and nothing of the sound beside the diagrams.
    const auto hasInk = [&](int left, int top, int right, int bottom) {
        int ink = 0;
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x) ink += picture.Brightness(x, y) < 200;
        }
        return ink > 20;
    };
    EXPECT_TRUE(hasInk(0, kLaneTop, kLeft, kSpectrumTop));
    EXPECT_TRUE(hasInk(0, kSpectrumTop, kLeft, kSpectrumTop + kSpectrumHeight));
    EXPECT_TRUE(hasInk(kLeft, kSpectrumTop + kSpectrumHeight + 10, kLeft + kColumns, picture.height));
    EXPECT_TRUE(hasInk(kLeft + kColumns + 30, kSpectrumTop, picture.width, kSpectrumTop + kSpectrumHeight));
    EXPECT_TRUE(hasInk(kLeft, 0, kLeft + 200, 30));
}

TEST_F(InfoPicture, TimeGoesFromLeftToRight) {
    TBytes samples = Sine(3000, 0.9, 8000, 8000);
    samples.resize(2 * samples.size());
    const TPicture picture = Draw(PlainWav({.samplesPerSec = 8000}, samples));
    const int middle = kLaneTop + kLaneHeight / 2;
    EXPECT_EQ(picture.At(kLeft + 490, middle + 60), kWave);
    EXPECT_NE(picture.At(kLeft + 510, middle + 60), kWave);
    const int row = kSpectrumTop + kSpectrumHeight / 4;
    EXPECT_GT(picture.Brightness(kLeft + 480, row), 500);
    EXPECT_LT(picture.Brightness(kLeft + 570, row), 60);
}

TEST_F(InfoPicture, ShortEmptyAndManyChannels) {
    // A single frame fills the lane.
    TBytes one;
    Append16(one, 16384);
    const TPicture single = Draw(PlainWav({}, one));
    const int half = kLaneTop + kLaneHeight / 4;
    EXPECT_EQ(single.At(kLeft, half), kWave);
    EXPECT_EQ(single.At(kLeft + kColumns - 1, half), kWave);

    const TPicture none = Draw(PlainWav({}, {}));
    EXPECT_EQ(none.width, 1200);
    for (int y = kLaneTop; y < kSpectrumTop; ++y) ASSERT_NE(none.At(kLeft + 10, y), kWave);

    // Lanes for 64 of the channels and no more.
    const TPicture many = Draw(PlainWav({.channels = 200}, TBytes(std::size_t{200} * 2 * 50)));
    EXPECT_EQ(many.height, kLaneTop + 64 * 80 + kSpectrumHeight + 60);
}

} // namespace
} // namespace vorlund::test
