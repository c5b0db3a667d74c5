// The program's window with a video, and what the program itself writes.
#include "plugins/y4m/Y4mTest.h"

#include "devices/WindowProbe.h"

#include <vorlund/ClassIds.h>
#include <vorlund/PlasmaVideoGenerator.h>

#include <chrono>
#include <cstdlib>
#include <optional>

namespace vorlund::test {
namespace {

class Y4mWindow : public Y4mTest {
protected:
    static std::vector<std::string> MakeArguments(const std::string& file) {
        return {"--plugin-path", BesideProgram("vorlund-plugins").string(), "window", file};
    }

    CTemporaryFolder folder_;
};

TEST_F(Y4mWindow, WhatPlasmaWritesIsReadBack) {
    const fs::path file = folder_.GetPath() / "plasma.y4m";
    ASSERT_TRUE(RunChild("vorlund",
                         {.arguments = {"plasma", "--size", "63x48", "--frames", "5", "-o", file.string()}})
                    .IsSuccess());
    const auto decoded = DecodeBytes(LoadBytes(file));
    EXPECT_EQ(GetRemarks(), "");
    const auto plasma = CreateAs<IPlasmaVideoGenerator>(classid::CPlasmaVideoGenerator);
    auto format = static_cast<const TDataFormat_VideoRgb&>(plasma->GetFormat());
    format.image.width = 63;
    format.image.height = 48;
    plasma->SetFormat(&format);
    ASSERT_EQ(decoded->GetLength(), 5 * std::int64_t{format.image.GetSizeInBytes()});
    EXPECT_EQ(static_cast<const TDataFormat_VideoRgb&>(decoded->GetFormat()).frameRate, 30);
    const TBytes pixels = ReadAll(*decoded);
    TBytes expected(pixels.size());
    for (std::size_t at = 0; at < expected.size(); at += format.image.GetSizeInBytes())
        plasma->Read(&expected[at], format.image.GetSizeInBytes());
    // Four pixels share their chroma; the colours of plasma change slowly.
    double sum = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i)
        if (i % 4 != 3) sum += std::abs(pixels[i] - expected[i]);
    EXPECT_LT(sum / static_cast<double>(pixels.size()), 4);
}

TEST_F(Y4mWindow, PlaysAtTheRateOfTheFileAndEnds) {
    if (!CanShowWindows()) GTEST_SKIP() << "no display";
    // 25 frames at 10 per second: the last one is due after 2.4 s.
    std::string text = "YUV4MPEG2 W160 H120 F10:1 Cmono\n";
    for (int i = 0; i < 25; ++i) text += "FRAME\n" + std::string(160 * 120, static_cast<char>(40 + i));
    const fs::path file = folder_.GetPath() / "grey.y4m";
    WriteFile(file, text);
    const auto began = std::chrono::steady_clock::now();
    const TChildEnd end = RunChild("vorlund", {.arguments = MakeArguments(file.string())});
    EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(2300));
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_NE(end.output.find("Size      160 x 120"), std::string::npos) << end.output;
    EXPECT_NE(end.output.find("Nominal   10.00 per second"), std::string::npos) << end.output;
    // Each frame is shown, or dropped on a machine that is busy.
    const std::size_t shown = end.output.find("Frames    ");
    const std::size_t dropped = end.output.find("Dropped   ");
    ASSERT_NE(shown, std::string::npos) << end.output;
    ASSERT_NE(dropped, std::string::npos) << end.output;
    const int sum = std::atoi(end.output.c_str() + shown + 10) + std::atoi(end.output.c_str() + dropped + 10);
    EXPECT_GE(sum, 25) << end.output;
    EXPECT_LE(std::atoi(end.output.c_str() + shown + 10), 25) << end.output;
}

TEST_F(Y4mWindow, ShowsThePixelsOfTheFile) {
    if (!CanShowWindows()) GTEST_SKIP() << "no display";
    // One frame that lasts, with all greys. It is wide enough for every window system.
    std::string text = "YUV4MPEG2 W200 H120 F1:100 Cmono XCOLORRANGE=FULL\nFRAME\n";
    for (int y = 0; y < 120; ++y)
        for (int x = 0; x < 200; ++x) text += static_cast<char>(x + 55 * (y % 2));
    text += "FRAME\n" + std::string(200 * 120, 'x');
    const fs::path file = folder_.GetPath() / "columns.y4m";
    WriteFile(file, text);
    CChildProcess child("vorlund", {.arguments = MakeArguments(file.string())});
    std::optional<TWindowPixels> picture;
    EXPECT_TRUE(WaitUntil([&] {
        picture = GetWindowPixels(FindWindowByTitle(VRL_L("columns.y4m")));
        if (!picture || picture->width != 200 || picture->height != 120) return false;
        for (int y = 0; y < 120; ++y)
            for (int x = 0; x < 200; ++x)
                if (picture->At(x, y) != static_cast<std::uint32_t>(x + 55 * (y % 2)) * 0x010101)
                    return false;
        return true;
    }));
    // The child sleeps until the next frame is due: it ends with this test.
}

TEST_F(Y4mWindow, RefusalsAreOneLine) {
    const std::string file = (files_ / "yuv420p10le.y4m").string();
    const TChildEnd end = RunChild("vorlund", {.arguments = MakeArguments(file)});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_NE(end.errors.find("': YUV4MPEG2: Unsupported colour space (colour space \"420p10\")"),
              std::string::npos)
        << end.errors;
    const TChildEnd without = RunChild("vorlund", {.arguments = {"--no-plugins", "window", file}});
    EXPECT_EQ(without.exitCode, 1u);
    EXPECT_NE(without.errors.find("': YUV4MPEG2: no loaded decoder reads it; try the plug-in 'y4m'"),
              std::string::npos)
        << without.errors;
}

} // namespace
} // namespace vorlund::test
