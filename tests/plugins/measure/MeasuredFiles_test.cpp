// "vorlund info --levels" with the plug-in.
#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string>

namespace vorlund::test {
namespace {

/// A sine of 1,000 Hz at -20 dB in two channels, with a clipped run and a silence.
TBytes MakeSound() {
    TBytes samples;
    for (int i = 0; i < 48000 * 4; ++i) {
        const double sine = 3276.8 * std::sin(2 * std::numbers::pi * i / 48);
        int sample = static_cast<int>(std::lround(sine));
        if (i >= 48000 * 3) sample = 0;
        if (i >= 4800 && i < 4810) sample = 32767;
        Append16(samples, static_cast<std::uint32_t>(sample));
        Append16(samples, static_cast<std::uint32_t>(i >= 48000 * 3 ? 0 : std::lround(sine)));
    }
    return PlainWav({.channels = 2, .samplesPerSec = 48000}, samples);
}

/// The number behind the first such key.
double GetNumber(const std::string& json, const std::string& key) {
    const std::size_t at = json.find('"' + key + "\": ");
    EXPECT_NE(at, std::string::npos) << key;
    return at == std::string::npos ? 0 : std::atof(json.c_str() + at + key.size() + 4);
}

TEST(MeasuredFiles, LevelsOfAFile) {
    const CTemporaryFolder folder;
    const TBytes sound = MakeSound();
    const std::string file = (folder.GetPath() / "a.wav").string();
    WriteFile(file, std::string(sound.begin(), sound.end()));

    const TChildEnd lines = RunChild("vorlund", {.arguments = {"info", "--levels", file}});
    ASSERT_TRUE(lines.IsSuccess()) << lines.errors;
    for (const char* part : {"Loudness  -20.", "Peak      ", "dBTP, samples -0.00 dBFS at 0.100 s",
                             "Channel   2: peak -20.00 dBFS, RMS -24.26 dBFS",
                             "Clipped   10 samples: 0.100 to 0.100 s", "Silence   1.000 s: 3.000 to 4.000 s"})
        EXPECT_NE(lines.output.find(part), std::string::npos) << part << '\n' << lines.output;

    const TChildEnd json = RunChild("vorlund", {.arguments = {"info", "--levels", "--json", file}});
    ASSERT_TRUE(json.IsSuccess()) << json.errors;
    EXPECT_NEAR(GetNumber(json.output, "integrated"), -20, 0.5);
    EXPECT_NEAR(GetNumber(json.output, "shortTermMax"), -20, 0.5);
    EXPECT_EQ(GetNumber(json.output, "peakFrame"), 4800);
    EXPECT_EQ(GetNumber(json.output, "clippedSamples"), 10);
    EXPECT_EQ(GetNumber(json.output, "silentFrames"), 48000);
    EXPECT_NE(json.output.find("\"first\": 144000"), std::string::npos);
}

TEST(MeasuredFiles, AreBroughtToALoudness) {
    const CTemporaryFolder folder;
    const TBytes sound = MakeSound();
    const std::string file = (folder.GetPath() / "a.wav").string();
    const std::string output = (folder.GetPath() / "b.wav").string();
    WriteFile(file, std::string(sound.begin(), sound.end()));
    const auto normalise = [&](const char* loudness) {
        const TChildEnd end = RunChild(
            "vorlund", {.arguments = {"convert", file, "-o", output, "--normalise", loudness, "--dither"}});
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        const TChildEnd json = RunChild("vorlund", {.arguments = {"info", "--levels", "--json", output}});
        EXPECT_TRUE(json.IsSuccess()) << json.errors;
        return json.output;
    };
    EXPECT_NEAR(GetNumber(normalise("-31"), "integrated"), -31, 0.1);
    // Louder than the peaks allow.
    const std::string loud = normalise("-5");
    EXPECT_LT(GetNumber(loud, "integrated"), -15);
    EXPECT_NEAR(GetNumber(loud, "truePeak"), -1, 0.05);
}

} // namespace
} // namespace vorlund::test
