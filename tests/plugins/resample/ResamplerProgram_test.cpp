// "vorlund convert --rate", and a list of several rates that is played, with the plug-in.
#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>

namespace vorlund::test {
namespace {

TEST(ResamplerProgram, FilesGetAnotherRate) {
    constexpr int kFrames = 44100;
    constexpr double kAngle = 2 * std::numbers::pi * 1000;
    TBytes samples;
    for (int i = 0; i < kFrames; ++i)
        Append16(samples, static_cast<std::uint32_t>(std::lround(10000 * std::sin(kAngle * i / 44100))));
    const CTemporaryFolder folder;
    const TBytes wav = PlainWav({}, samples);
    WriteFile(folder.GetPath() / "in.wav", std::string(wav.begin(), wav.end()));
    for (const int rate : {8000, 48000, 96000}) {
        SCOPED_TRACE(rate);
        const std::string output = (folder.GetPath() / "out.wav").string();
        const TChildEnd end =
            RunChild("vorlund", {.arguments = {"convert", (folder.GetPath() / "in.wav").string(), "-o",
                                               output, "--rate", std::to_string(rate)}});
        ASSERT_TRUE(end.IsSuccess()) << end.errors;
        const std::string file = ReadFile(output);
        const std::size_t data = file.find("data") + 8;
        // A second of 16 bits, as the source had, and the same sine.
        ASSERT_EQ(file.size() - data, static_cast<std::size_t>(rate) * 2);
        for (int i = rate / 4; i < rate * 3 / 4; ++i) {
            const std::size_t at = data + static_cast<std::size_t>(i) * 2;
            const auto sample = static_cast<std::int16_t>(static_cast<std::uint8_t>(file[at]) |
                                                          static_cast<std::uint8_t>(file[at + 1]) << 8);
            ASSERT_NEAR(sample, 10000 * std::sin(kAngle * i / rate), 3) << i;
        }
    }
}

TEST(ResamplerProgram, ListOfSeveralRatesIsPlayedAtTheFirst) {
    const CTemporaryFolder folder;
    TChildOptions options{.arguments = {"play"}};
    for (const std::uint32_t rate : {48000U, 44100U, 8000U, 48000U}) {
        const std::string name =
            (folder.GetPath() / (std::to_string(options.arguments.size()) + ".wav")).string();
        // Half a second of one level.
        TBytes samples;
        for (std::uint32_t i = 0; i < rate / 2; ++i) Append16(samples, 1000);
        const TBytes wav = PlainWav({.samplesPerSec = rate}, samples);
        WriteFile(name, std::string(wav.begin(), wav.end()));
        options.arguments.push_back(name);
    }
    const std::string output = (folder.GetPath() / "out.wav").string();
    options.arguments.insert(options.arguments.end(), {"--device", "file:" + output});
    const TChildEnd end = RunChild("vorlund", options);
    ASSERT_TRUE(end.IsSuccess()) << end.errors;
    const std::string file = ReadFile(output);
    EXPECT_EQ((file.size() - file.find("data") - 8) / 2, 4u * 24000);
}

} // namespace
} // namespace vorlund::test
