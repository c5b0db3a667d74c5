// "vorlund convert" with the encoders of the plug-in.
#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

namespace vorlund::test {
namespace {

/// A second of a sine in two channels.
TBytes MakeSine() {
    TBytes samples;
    for (int i = 0; i < 48000; ++i) {
        const auto sample =
            static_cast<std::uint32_t>(std::lround(9000 * std::sin(2 * std::numbers::pi * 440 * i / 48000)));
        Append16(samples, sample);
        Append16(samples, -sample);
    }
    return samples;
}

/// A folder with "in.wav", which is tagged.
class SndfileConvert : public testing::Test {
protected:
    SndfileConvert() {
        const TBytes wav = PlainWav({.channels = 2, .samplesPerSec = 48000}, sine_);
        WriteFile(folder_.GetPath() / "in.wav", std::string(wav.begin(), wav.end()));
        Run({"tag", At("in.wav"), "--set", "INAM=Title", "--set", "IART=Artist"});
    }

    std::string At(const std::string& name) const { return (folder_.GetPath() / name).string(); }
    static std::string Run(const std::vector<std::string>& arguments) {
        const TChildEnd end = RunChild("vorlund", {.arguments = arguments});
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        return end.output;
    }
    /// The number behind the first such key of the JSON about a file.
    static double GetNumber(const std::string& json, const std::string& key) {
        const std::size_t at = json.find('"' + key + "\": ");
        return at == std::string::npos ? -1 : std::atof(json.c_str() + at + key.size() + 4);
    }
    /// The last bytes of a WAV file that ends with its sound.
    TBytes Tail(const std::string& name, std::size_t size) const {
        const std::string bytes = ReadFile(folder_.GetPath() / name);
        EXPECT_GE(bytes.size(), size);
        return {bytes.end() - static_cast<std::ptrdiff_t>(std::min(size, bytes.size())), bytes.end()};
    }

    const TBytes sine_ = MakeSine();
    const CTemporaryFolder folder_;
};

TEST_F(SndfileConvert, KindsWithoutLossComeBack) {
    for (const std::string type : {"flac", "aiff"}) {
        SCOPED_TRACE(type);
        Run({"convert", At("in.wav"), "-o", At("x." + type)});
        Run({"convert", At("x." + type), "-o", At(type + ".wav")});
        const std::string json = Run({"info", "--json", At("x." + type)});
        EXPECT_EQ(GetNumber(json, "frames"), 48000);
        EXPECT_EQ(GetNumber(json, "bits"), 16);
        const std::string back = ReadFile(folder_.GetPath() / (type + ".wav"));
        EXPECT_NE(back.find(std::string(sine_.begin(), sine_.end())), std::string::npos);
        // With what it says about itself.
        const std::string tags = Run({"info", At(type + ".wav")});
        EXPECT_NE(tags.find("title: Title"), std::string::npos) << tags;
        EXPECT_NE(tags.find("artist: Artist"), std::string::npos);
    }
}

TEST_F(SndfileConvert, MoreBitsAreKept) {
    Run({"convert", At("in.wav"), "-o", At("x.flac"), "--bits", "24"});
    EXPECT_EQ(GetNumber(Run({"info", "--json", At("x.flac")}), "bits"), 32);
    Run({"convert", At("x.flac"), "-o", At("y.wav"), "--bits", "16", "--to", "0.5"});
    EXPECT_EQ(Tail("y.wav", 96000), TBytes(sine_.begin(), sine_.begin() + 96000));
    // Floats of a WAV file are read by the plug-in, and overs are cut and counted.
    Run({"convert", At("in.wav"), "-o", At("f.wav"), "--bits", "float"});
    Run({"convert", At("f.wav"), "-o", At("g.wav"), "--bits", "16"});
    EXPECT_EQ(Tail("g.wav", sine_.size()), sine_);
}

TEST_F(SndfileConvert, LossyKindsKeepLengthAndTexts) {
    for (const std::string type : {"ogg", "opus", "mp3"}) {
        SCOPED_TRACE(type);
        const TChildEnd end = RunChild(
            "vorlund", {.arguments = {"convert", At("in.wav"), "-o", At("x." + type), "--quality", "0.7"}});
        if (type == "mp3" && end.errors.find("No loaded encoder") != std::string::npos) continue;
        ASSERT_TRUE(end.IsSuccess()) << end.errors;
        const std::string json = Run({"info", "--json", At("x." + type)});
        EXPECT_EQ(GetNumber(json, "frames"), 48000) << json;
        EXPECT_EQ(GetNumber(json, "channels"), 2);
        EXPECT_NE(json.find("\"text\": \"Title\""), std::string::npos);
    }
}

TEST_F(SndfileConvert, WhatAKindCannotHaveIsRefused) {
    const struct {
        std::vector<std::string> options;
        std::string_view error;
    } rows[] = {
        {{At("x.flac"), "--bits", "float"}, "The option 'bits' is 8, 16 or 24, for AIFF also 32 or float"},
        {{At("x.ogg"), "--bits", "16"}, "Lossy files have no bits to choose"},
        {{At("x.ogg"), "--quality", "2"}, "The option 'quality' is a number from 0 to 1, the best"},
        {{At("x.flac"), "--quality", "1"}, "This kind of file has no such option"},
    };
    for (const auto& row : rows) {
        std::vector<std::string> arguments{"convert", At("in.wav"), "-o"};
        arguments.insert(arguments.end(), row.options.begin(), row.options.end());
        const TChildEnd end = RunChild("vorlund", {.arguments = arguments});
        EXPECT_EQ(end.exitCode, 1u);
        EXPECT_NE(end.errors.find(row.error), std::string::npos) << end.errors;
        EXPECT_FALSE(fs::exists(row.options.front()));
    }
}

} // namespace
} // namespace vorlund::test
