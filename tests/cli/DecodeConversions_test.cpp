// The options "--format" and "--channels" of "vorlund decode": the bytes that come out are those of the
// rules, written here a second time, whatever the system.
#include "cli/DecodeCommand.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <random>

using namespace vorlund::test;

namespace {

/// Samples as numbers, which doubles hold exactly, and what kind of samples they are.
struct TSound {
    std::string format;
    std::uint16_t channels = 0;
    std::vector<double> samples = {};

    int GetBits() const { return format == "u8" ? 8 : format == "s16" ? 16 : 32; }

    TBytes ToBytes() const {
        TBytes bytes;
        for (const double sample : samples) {
            std::uint32_t word = static_cast<std::uint32_t>(static_cast<std::int64_t>(sample));
            if (format == "f32") word = std::bit_cast<std::uint32_t>(static_cast<float>(sample));
            for (int bit = 0; bit < GetBits(); bit += 8)
                bytes.push_back(static_cast<std::uint8_t>(word >> bit));
        }
        return bytes;
    }

    /// The file that "-o out.wav" writes.
    TBytes ToWav() const {
        const TBytes data = ToBytes();
        TWavFormat wav{.channels = channels, .bits = static_cast<std::uint16_t>(GetBits())};
        CWavBuilder file;
        if (format == "f32") {
            wav.tag = 3;
            TBytes frames;
            Append32(frames, static_cast<std::uint32_t>(samples.size() / channels));
            file.Format(wav, 18).Chunk("fact", frames);
        } else {
            file.Format(wav);
        }
        file.Chunk("data", data);
        if (data.size() % 2 != 0) file.Raw({0});
        return file.Build();
    }
};

TSound MakeNoise(const std::string& format, std::uint16_t channels, std::size_t frames) {
    std::mt19937 random(channels);
    TSound sound{format, channels};
    for (std::size_t i = 0; i < frames * channels; ++i) {
        const auto number = static_cast<double>(random() % 65536);
        sound.samples.push_back(format == "u8" ? std::floor(number / 256) : number - 32768);
    }
    return sound;
}

/// From the formats of WAV files that are read to all that are written.
TSound ConvertSamples(TSound sound, const std::string& format) {
    if (format.empty() || format == sound.format) return sound;
    const bool isByte = sound.format == "u8";
    for (double& sample : sound.samples) {
        const double fraction = isByte ? (sample - 128) / 128 : sample / 32768;
        sample = format == "u8"    ? std::floor(fraction * 128) + 128
                 : format == "s16" ? fraction * 32768
                 : format == "s32" ? fraction * 2147483648.0
                                   : fraction;
    }
    sound.format = format;
    return sound;
}

TSound MixChannels(const TSound& sound, std::uint16_t channels) {
    if (channels == 0 || channels == sound.channels) return sound;
    TSound mixed{sound.format, channels};
    const double silence = sound.format == "u8" ? 128 : 0;
    for (std::size_t at = 0; at < sound.samples.size(); at += sound.channels) {
        const auto sum = [&](std::initializer_list<std::size_t> terms, double divisor) {
            double result = 0;
            for (const std::size_t term : terms) {
                const double share = sound.samples[at + term] / divisor;
                result += sound.format == "f32" ? share : std::trunc(share);
            }
            return result;
        };
        std::vector<double> frame;
        if (sound.channels == 1)
            frame.assign(channels, sound.samples[at]);
        else if (channels == 6)
            frame = {sum({0}, 1), sum({1}, 1), silence, silence, silence, silence};
        else if (sound.channels == 2)
            frame = {sum({0, 1}, 2)};
        else if (channels == 1)
            frame = {sum({0, 1, 2, 3, 4, 5}, 6)};
        else
            frame = {sum({0, 2, 3, 4}, 4), sum({1, 2, 3, 5}, 4)};
        mixed.samples.insert(mixed.samples.end(), frame.begin(), frame.end());
    }
    return mixed;
}

std::vector<std::string> Options(const std::string& format, int channels) {
    std::vector<std::string> options;
    if (!format.empty()) options.insert(options.end(), {"--format", format});
    if (channels != 0) options.insert(options.end(), {"--channels", std::to_string(channels)});
    return options;
}

class DecodeConversions : public DecodeCommand {
protected:
    TChildEnd Convert(const std::string& input, const std::string& output, const std::string& format,
                      int channels) const {
        std::vector<std::string> arguments = Options(format, channels);
        arguments.insert(arguments.end(), {input, "-o", output});
        return Decode(std::move(arguments));
    }
};

/// Frames that fill no whole number of steps or blocks.
constexpr std::size_t kFrames = 5003;

TEST_F(DecodeConversions, SamplesThenChannels) {
    const struct {
        const char* from;
        std::uint16_t fromChannels;
        const char* to;
        std::uint16_t toChannels;
    } rows[] = {
        {"s16", 6, "u8", 2},  {"s16", 6, "s16", 2}, {"s16", 6, "s32", 2}, {"s16", 6, "f32", 2},
        {"s16", 6, "f32", 1}, {"s16", 6, "s32", 1}, {"s16", 6, "", 1},    {"s16", 6, "f32", 0},
        {"u8", 6, "", 2},     {"u8", 6, "s16", 1},  {"u8", 2, "f32", 6},  {"u8", 2, "", 1},
        {"u8", 1, "s32", 2},  {"u8", 1, "u8", 6},   {"s16", 2, "u8", 0},  {"s16", 2, "s32", 6},
        {"s16", 2, "f32", 1}, {"s16", 1, "f32", 6},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.from) + " x " + std::to_string(row.fromChannels) + " to " + row.to +
                     " x " + std::to_string(row.toChannels));
        const TSound source = MakeNoise(row.from, row.fromChannels, kFrames);
        const std::string input = Make("in.wav", source.ToWav());
        const TChildEnd end = Convert(input, At("out.wav"), row.to, row.toChannels);
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        EXPECT_TRUE(Load("out.wav") == MixChannels(ConvertSamples(source, row.to), row.toChannels).ToWav());
    }
}

TEST_F(DecodeConversions, TheReportIsThatOfTheResult) {
    const TSound source = MakeNoise("s16", 6, 441);
    const TChildEnd end = Decode({"--format", "f32", Make("in.wav", source.ToWav()), "--channels", "2"});
    EXPECT_TRUE(end.IsSuccess());
    const std::string report = WithoutReturns(end.output);
    for (const char* line : {"Channels  2\n", "Rate      44100 Hz\n", "Bits      32 float\n",
                             "Duration  0.010 s\n", "Bytes     3528\n",
                             "Chain     vorlund::CFileInputStream > vorlund::CWavDecoder > "
                             "vorlund::CAudioPcmSampleFormatConverter > "
                             "vorlund::CAudioPcmChannelNumberConverter\n"}) {
        EXPECT_NE(report.find(line), std::string::npos) << line << report;
    }
    EXPECT_EQ(List(), std::vector<std::string>{"in.wav"});
}

TEST_F(DecodeConversions, WhatIsAskedForAlreadyPassesUnchanged) {
    // Even the bytes of a partial frame.
    TBytes data = MakeNoise("s16", 2, kFrames).ToBytes();
    data.push_back(1);
    data.push_back(2);
    const TBytes wav = PlainWav({.channels = 2}, data);
    const TChildEnd end = Convert(Make("in.wav", wav), At("out.wav"), "s16", 2);
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(Load("out.wav"), wav);
}

TEST_F(DecodeConversions, APartialFrameAtTheEndIsLeftOut) {
    for (const std::size_t frames : {0, 86, 1000}) {
        for (const std::size_t rest : {1, 11}) {
            const TSound source = MakeNoise("s16", 6, frames);
            TBytes data = source.ToBytes();
            data.resize(data.size() + rest, 0x55);
            const std::string input = Make("in.wav", PlainWav({.channels = 6}, data));
            EXPECT_TRUE(Convert(input, At("out.wav"), "f32", 2).IsSuccess());
            EXPECT_EQ(Load("out.wav"), MixChannels(ConvertSamples(source, "f32"), 2).ToWav())
                << frames << " frames and " << rest << " bytes";
        }
    }
}

TEST_F(DecodeConversions, AnOddSizeIsPadded) {
    const TSound source = MakeNoise("s16", 2, 1025);
    EXPECT_TRUE(Convert(Make("in.wav", source.ToWav()), At("out.wav"), "u8", 1).IsSuccess());
    const TBytes wav = Load("out.wav");
    EXPECT_EQ(wav, MixChannels(ConvertSamples(source, "u8"), 1).ToWav());
    EXPECT_EQ(wav.size(), 44u + 1026);
}

TEST_F(DecodeConversions, RawBytes) {
    const TSound source = MakeNoise("s16", 6, kFrames);
    const TBytes expected = MixChannels(ConvertSamples(source, "f32"), 2).ToBytes();
    const std::string input = Make("in.wav", source.ToWav());

    const TChildEnd toOutput = Convert(input, "-", "f32", 2);
    EXPECT_TRUE(toOutput.IsSuccess());
    EXPECT_TRUE(TBytes(toOutput.output.begin(), toOutput.output.end()) == expected);
    EXPECT_NE(toOutput.errors.find("Channels  2\n"), std::string::npos) << toOutput.errors;

    EXPECT_TRUE(Decode({"--raw", "--format=f32", "--channels=2", input, "-o", At("out.wav")}).IsSuccess());
    EXPECT_TRUE(Load("out.wav") == expected);
}

TEST_F(DecodeConversions, WhatCannotBeConvertedIsOneLineAndLeavesNoOutput) {
    const auto make = [this](const std::string& name, std::uint16_t channels) {
        return Make(name, PlainWav({.channels = channels}, Ramp(4800)));
    };
    const std::string none = make("none.wav", 0);
    const std::string three = make("three.wav", 3);
    const std::string four = make("four.wav", 4);
    const std::string most = make("most.wav", 512);
    const std::string many = make("many.wav", 513);
    const struct {
        std::string input;
        std::vector<std::string> options;
        std::string line;
    } rows[] = {
        {three, Options("", 2), "Cannot mix '" + three + "': It has 3 channels, not 1, 2 or 6"},
        {four, Options("", 6), "Cannot mix '" + four + "': It has 4 channels, not 1, 2 or 6"},
        {four, Options("f32", 1), "Cannot mix '" + four + "': It has 4 channels, not 1, 2 or 6"},
        {none, Options("", 1), "Cannot mix '" + none + "': It has 0 channels, not 1, 2 or 6"},
        {none, Options("u8", 0), "Cannot convert '" + none + "': Its frames have 0 bytes"},
        {many, Options("u8", 0), "Cannot convert '" + many + "': Its frames have 1026 bytes"},
    };
    const std::string kept = Make("kept.wav", std::string("what was there before"));
    const std::vector<std::string> before = List();
    std::string output = At("out.wav");
    for (const auto& row : rows) {
        std::vector<std::string> arguments = row.options;
        arguments.insert(arguments.end(), {row.input, "-o", output});
        const TChildEnd end = Decode(std::move(arguments));
        EXPECT_EQ(end.exitCode, 1u) << row.line;
        EXPECT_EQ(end.output, "") << row.line;
        EXPECT_EQ(end.errors, "vorlund: " + row.line + "\n");
        EXPECT_EQ(List(), before) << row.line;
        output = kept;
    }
    EXPECT_EQ(std::filesystem::file_size(kept), 21u);
    // What just fits is converted, and so is any number of channels that need no mixing.
    EXPECT_TRUE(Decode({"--format", "u8", most}).IsSuccess());
    EXPECT_TRUE(Decode({"--format", "f32", three}).IsSuccess());
}

TEST_F(DecodeConversions, WrongTargetsEndWithTwo) {
    const std::string input = Make("in.wav", PlainWav({}, Ramp(8)));
    const std::vector<std::string> wrong[] = {
        {"--format", "f64"}, {"--format", "1"}, {"--format"}, {"--channels", "3"}, {"--channels", "two"}};
    for (const auto& options : wrong) {
        std::vector<std::string> arguments{input, "-o", At("out.wav")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const TChildEnd end = Decode(std::move(arguments));
        EXPECT_EQ(end.exitCode, 2u) << testing::PrintToString(options);
        EXPECT_EQ(List(), std::vector<std::string>{"in.wav"});
    }
}

} // namespace
