// The program's window with a picture: what is on the screen is what was in the file.
#include "plugins/image/ImageTest.h"

#include "devices/WindowProbe.h"

#include <optional>

namespace vorlund::test {
namespace {

class ImageWindow : public ImageTest {
protected:
    static std::vector<std::string> MakeArguments(const std::string& file) {
        return {"--plugin-path", BesideProgram("vorlund-plugins").string(), "window", file};
    }

    /// The pixels of a picture on white.
    std::vector<std::uint32_t> LoadPixels(const std::string& name) const {
        const TBytes bytes = Load(name + ".bgra");
        std::vector<std::uint32_t> pixels;
        for (std::size_t i = 0; i < bytes.size(); i += 4) {
            std::uint32_t pixel = 0;
            for (std::size_t channel = 0; channel < 3; ++channel) {
                const std::uint32_t alpha = bytes[i + 3];
                const std::uint32_t light = (bytes[i + channel] * alpha + 255 * (255 - alpha) + 127) / 255;
                pixel |= light << 8 * channel;
            }
            pixels.push_back(pixel);
        }
        return pixels;
    }

    static bool HasPixels(const std::optional<TWindowPixels>& picture,
                          const std::vector<std::uint32_t>& pixels) {
        if (!picture || picture->pixels.size() != pixels.size()) return false;
        return std::equal(pixels.begin(), pixels.end(), picture->pixels.begin(),
                          [](std::uint32_t one, std::uint32_t other) { return one == (other & 0xFFFFFF); });
    }
};

TEST_F(ImageWindow, ShowsThePixelsOfTheFile) {
    if (!CanShowWindows()) GTEST_SKIP() << "no display";
    for (const char* const name : {"video-001.png", "benchNRGBA-gradient.png", "video-001.q50.420.jpeg"}) {
        SCOPED_TRACE(name);
        const auto expected = LoadPixels(name);
        CChildProcess child("vorlund", {.arguments = MakeArguments((files_ / name).string())});
        const wstring title = ToVorlund(name);
        std::optional<TWindowPixels> picture;
        EXPECT_TRUE(WaitUntil([&] {
            picture = GetWindowPixels(FindWindowByTitle(title));
            return HasPixels(picture, expected);
        })) << (picture ? picture->width : 0);
        CloseWindowByUser(FindWindowByTitle(title));
        const TChildEnd end = child.Wait();
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        EXPECT_NE(end.output.find("Size      "), std::string::npos) << end.output;
    }
}

TEST_F(ImageWindow, ALargePictureIsShownSmaller) {
    if (!CanShowWindows()) GTEST_SKIP() << "no display";
    auto arguments = MakeArguments((files_ / "flat.png").string());
    arguments.insert(arguments.end(), {"--frames", "2"});
    const TChildEnd end = RunChild("vorlund", {.arguments = arguments});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_NE(end.output.find("Size      4096 x 4096"), std::string::npos) << end.output;
    EXPECT_NE(end.output.find("Shown     1024 x 1024"), std::string::npos) << end.output;
}

TEST_F(ImageWindow, RefusalsAreOneLine) {
    const std::string file = (files_ / "side.png").string();
    const TChildEnd end = RunChild("vorlund", {.arguments = MakeArguments(file)});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors.find("vorlund: Cannot show '"), 0u) << end.errors;
    EXPECT_NE(end.errors.find("': PNG: Picture is too large (width 2147483647, height 2147483647)"),
              std::string::npos)
        << end.errors;
    const TChildEnd without = RunChild("vorlund", {.arguments = {"--no-plugins", "window", file}});
    EXPECT_EQ(without.exitCode, 1u);
    EXPECT_NE(without.errors.find("': PNG: no loaded decoder reads it; try the plug-in 'image'"),
              std::string::npos)
        << without.errors;
}

} // namespace
} // namespace vorlund::test
