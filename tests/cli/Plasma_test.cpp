// The command "plasma": its files are decoded by readers of their own and compared with the generator's
// frames.
#include "cli/PngReader.h"
#include "cli/ProgramFolder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/PlasmaVideoGenerator.h>
#include <vorlund/RefPtr.h>

#include "support/LibraryScope.h"

#include <cmath>

namespace vorlund::test {
namespace {

using TPixels = std::vector<std::uint32_t>;

class PlasmaCommand : public CProgramFolder {
protected:
    static std::vector<TPixels> Frames(std::uint32_t width, std::uint32_t height, std::size_t count) {
        const CLibraryScope library;
        const auto generator = CreateAs<IPlasmaVideoGenerator>(classid::CPlasmaVideoGenerator);
        TDataFormat_VideoRgb format;
        format.SetDefaults();
        format.image.width = width;
        format.image.height = height;
        generator->SetFormat(&format);
        std::vector<TPixels> frames(count, TPixels(std::size_t{width} * height));
        for (TPixels& frame : frames) generator->Read(frame.data(), frame.size() * 4);
        return frames;
    }

    void ExpectPng(const std::string& name, std::uint32_t width, std::uint32_t height,
                   const TPixels& frame) const {
        const TBytes file = Load(name);
        int actualWidth = 0, actualHeight = 0, channels = 0;
        stbi_uc* const image = stbi_load_from_memory(file.data(), static_cast<int>(file.size()), &actualWidth,
                                                     &actualHeight, &channels, 0);
        ASSERT_NE(image, nullptr) << name;
        EXPECT_EQ(actualWidth, static_cast<int>(width));
        EXPECT_EQ(actualHeight, static_cast<int>(height));
        ASSERT_EQ(channels, 3);
        TPixels pixels;
        for (std::size_t i = 0; i < frame.size(); ++i) {
            const stbi_uc* const rgb = image + 3 * i;
            pixels.push_back(0xFF000000U | static_cast<std::uint32_t>(rgb[0]) << 16 |
                             static_cast<std::uint32_t>(rgb[1]) << 8 | rgb[2]);
        }
        stbi_image_free(image);
        EXPECT_EQ(pixels, frame) << name;
    }
};

/// The channel of a pixel.
double Channel(std::uint32_t pixel, int shift) {
    return pixel >> shift & 255;
}

/// Checks one plane of a frame: each sample is the mean of `step` x `step` pixels in an equation of BT.601.
void ExpectPlane(const std::uint8_t* plane, const TPixels& frame, std::size_t width, std::size_t height,
                 std::size_t step, double offset, double red, double green, double blue) {
    for (std::size_t y = 0; y < height; y += step) {
        for (std::size_t x = 0; x < width; x += step) {
            double sum = 0;
            int count = 0;
            for (std::size_t i = y; i < std::min(y + step, height); ++i) {
                for (std::size_t j = x; j < std::min(x + step, width); ++j, ++count) {
                    const std::uint32_t pixel = frame[i * width + j];
                    sum += red * Channel(pixel, 16) + green * Channel(pixel, 8) + blue * Channel(pixel, 0);
                }
            }
            const double expected = offset + sum / count / 255;
            const double actual = *plane++;
            ASSERT_LT(std::abs(actual - expected), 0.51) << x << ' ' << y;
        }
    }
}

TEST_F(PlasmaCommand, WritesNumberedImages) {
    const TChildEnd end = Run({"plasma", "--size", "37x23", "--frames", "3", "-o", At("plasma.v1.png")});
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(end.output + end.errors, "");
    const std::vector<std::string> names = {"plasma.v1-0001.png", "plasma.v1-0002.png", "plasma.v1-0003.png"};
    EXPECT_EQ(List(), names);
    const auto frames = Frames(37, 23, 3);
    for (std::size_t i = 0; i < 3; ++i) ExpectPng(names[i], 37, 23, frames[i]);
}

TEST_F(PlasmaCommand, DefaultsAreASecondOfTheGeneratorsSize) {
    EXPECT_TRUE(Run({"plasma", "-o", At("P.PNG")}).IsSuccess());
    const std::vector<std::string> names = List();
    ASSERT_EQ(names.size(), 30U);
    EXPECT_EQ(names.front(), "P-0001.PNG");
    EXPECT_EQ(names.back(), "P-0030.PNG");
    ExpectPng(names.back(), 400, 300, Frames(400, 300, 30).back());
}

TEST_F(PlasmaCommand, ALongVideo) {
    EXPECT_TRUE(Run({"plasma", "--size", "1x1", "--frames", "9999", "-o", At("p.y4m")}).IsSuccess());
    const TBytes file = Load("p.y4m");
    const auto header = std::find(file.begin(), file.end(), '\n') - file.begin() + 1;
    // Three samples behind each line.
    EXPECT_EQ(file.size() - static_cast<std::size_t>(header), 9999U * (6 + 3));
}

TEST_F(PlasmaCommand, WritesAVideo) {
    const std::pair<std::size_t, std::size_t> sizes[] = {{64, 48}, {37, 23}, {1, 1}, {2, 5}};
    for (const auto& [width, height] : sizes) {
        const std::string size = std::to_string(width) + "x" + std::to_string(height);
        ASSERT_TRUE(Run({"plasma", "--size", size, "--frames", "5", "-o", At("p.y4m")}).IsSuccess());
        EXPECT_EQ(List(), std::vector<std::string>{"p.y4m"});
        const TBytes file = Load("p.y4m");
        const std::string header = "YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) +
                                   " F30:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED\n";
        const std::size_t chroma = ((width + 1) / 2) * ((height + 1) / 2);
        ASSERT_EQ(file.size(), header.size() + 5 * (6 + width * height + 2 * chroma));
        EXPECT_EQ(std::string(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(header.size())),
                  header);
        const std::uint8_t* at = file.data() + header.size();
        for (const TPixels& frame :
             Frames(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), 5)) {
            EXPECT_EQ(std::string(at, at + 6), "FRAME\n");
            at += 6;
            ExpectPlane(at, frame, width, height, 1, 16, 65.481, 128.553, 24.966);
            at += width * height;
            ExpectPlane(at, frame, width, height, 2, 128, -37.797, -74.203, 112.0);
            at += chroma;
            ExpectPlane(at, frame, width, height, 2, 128, 112.0, -93.786, -18.214);
            at += chroma;
        }
    }
}

TEST_F(PlasmaCommand, WritesAVideoToStandardOutput) {
    const std::vector<std::string> arguments{"plasma", "--size", "33x17", "--frames", "2", "-o"};
    const auto run = [&](const std::string& output) {
        auto all = arguments;
        all.push_back(output);
        return Run(std::move(all));
    };
    EXPECT_TRUE(run(At("p.y4m")).IsSuccess());
    const TChildEnd end = run("-");
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(TBytes(end.output.begin(), end.output.end()), Load("p.y4m"));
}

TEST_F(PlasmaCommand, WrongArgumentsAreOneLine) {
    const std::string out = At("out.png");
    const std::vector<std::string> rows[] = {
        {"plasma"},
        {"plasma", "-o", At("out.gif")},
        {"plasma", "-o", At("out")},
        {"plasma", "-o", ".png"},
        {"plasma", "-o", out, "--size", "640"},
        {"plasma", "-o", out, "--size", "640x"},
        {"plasma", "-o", out, "--size", "x480"},
        {"plasma", "-o", out, "--size", "0x480"},
        {"plasma", "-o", out, "--size", "640x0"},
        {"plasma", "-o", out, "--size", "-4x4"},
        {"plasma", "-o", out, "--size", "4x4x4"},
        {"plasma", "-o", out, "--size", "16385x1"},
        {"plasma", "-o", out, "--size", "4294967297x1"},
        {"plasma", "-o", out, "--frames", "0"},
        {"plasma", "-o", out, "--frames", "-1"},
        {"plasma", "-o", out, "--frames", "1000001"},
        {"plasma", "-o", out, "--frames", "x"},
        {"plasma", "-o", out, "more"},
    };
    for (const auto& arguments : rows) ExpectRefused(arguments, 2);
    ExpectRefused({"plasma", "-o", At("no/such/folder/out.png")}, 1);
    ExpectRefused({"plasma", "-o", At("no/such/folder/out.y4m")}, 1);
}

} // namespace
} // namespace vorlund::test
