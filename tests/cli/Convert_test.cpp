// The command "convert" with what the library itself reads and writes: WAV files of 8 and 16 bits become WAV
// files.
#include "cli/DecodeCommand.h"
#include "support/LibraryScope.h"

#include <vorlund/Path.h>
#include <vorlund/WavMetadata.h>
#include <vorlund/WavWriter.h>

#include <algorithm>
#include <filesystem>

namespace vorlund::test {
namespace {

namespace fs = std::filesystem;

class ConvertCommand : public DecodeCommand {
protected:
    static TChildEnd Convert(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "convert");
        TChildEnd end = Run(std::move(arguments));
        end.output = WithoutReturns(end.output);
        return end;
    }
    /// The bytes of the sound in a file that the program wrote.
    TBytes Sound(const std::string& name) const {
        const TBytes file = Load(name);
        const std::string_view id = "data";
        const auto at = std::search(file.begin(), file.end(), id.begin(), id.end());
        EXPECT_NE(at, file.end()) << name;
        if (at == file.end()) return {};
        const auto size = static_cast<std::size_t>(at[4] | at[5] << 8 | at[6] << 16 | at[7] << 24);
        EXPECT_LE(size, static_cast<std::size_t>(file.end() - at) - 8);
        return {at + 8, at + 8 + static_cast<std::ptrdiff_t>(size)};
    }
    void ExpectConverted(const std::vector<std::string>& arguments, const std::string& output) const {
        const TChildEnd end = Convert(arguments);
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        EXPECT_EQ(end.output, output);
        EXPECT_EQ(end.errors, "");
    }
};

using TNames = std::vector<std::string>;

TBytes Samples(const std::vector<int>& samples) {
    TBytes bytes;
    for (const int sample : samples) Append16(bytes, static_cast<std::uint32_t>(sample));
    return bytes;
}

TEST_F(ConvertCommand, SamplesAreOfTrueScale) {
    const std::string input = Make("in.wav", PlainWav({}, Samples({0, 1, -1, 16384, 32767, -32768})));
    const struct {
        const char* bits;
        TBytes expected;
    } rows[] = {
        {"8", {128, 128, 128, 192, 255, 0}},
        {"16", Samples({0, 1, -1, 16384, 32767, -32768})},
        {"24", {0, 0, 0, 0, 1, 0, 0, 0xFF, 0xFF, 0, 0, 0x40, 0, 0xFF, 0x7F, 0, 0, 0x80}},
        {"32", {0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0xFF, 0xFF, 0, 0, 0, 0x40, 0, 0, 0xFF, 0x7F, 0, 0, 0, 0x80}},
        {"float",
         {0, 0, 0, 0, 0, 0, 0, 0x38, 0, 0, 0, 0xB8, 0, 0, 0, 0x3F, 0, 0xFE, 0x7F, 0x3F, 0, 0, 0x80, 0xBF}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bits);
        const std::string name = std::string(row.bits) + ".wav";
        const TChildEnd end = Convert({input, "-o", At(name), "--bits", row.bits});
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        EXPECT_EQ(Sound(name), row.expected);
    }
    // What is not asked for stays.
    ExpectConverted({input, "-o", At("same.wav")}, "Converted 1 file\n");
    EXPECT_EQ(Sound("same.wav"), rows[1].expected);
}

TEST_F(ConvertCommand, ChannelsAreMixed) {
    const std::string input =
        Make("in.wav", PlainWav({.channels = 2}, Samples({1000, 3000, -32768, -32768})));
    ExpectConverted({input, "-o", At("mono.wav"), "--channels", "1"}, "Converted 1 file\n");
    EXPECT_EQ(Sound("mono.wav"), Samples({2000, -32768}));
    const std::string mono = Make("in2.wav", PlainWav({.channels = 1}, Samples({7, -9})));
    ExpectConverted({mono, "-o", At("stereo.wav"), "--channels", "2"}, "Converted 1 file\n");
    EXPECT_EQ(Sound("stereo.wav"), Samples({7, 7, -9, -9}));
}

TEST_F(ConvertCommand, FromOneTimeToAnother) {
    std::vector<int> ramp(8000 * 3);
    for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<int>(i);
    const std::string input = Make("in.wav", PlainWav({.samplesPerSec = 8000}, Samples(ramp)));
    const struct {
        TNames options;
        std::size_t first;
        std::size_t end;
    } rows[] = {
        {{"--from", "1"}, 8000, 24000},
        {{"--to", "0:01.5"}, 0, 12000},
        {{"--from", "0.5", "--to", "2"}, 4000, 16000},
        {{"--from", "2", "--to", "1"}, 0, 0},
        {{"--from", "100"}, 0, 0},
        {{"--to", "0:00:100"}, 0, 24000},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.options));
        TNames arguments{input, "-o", At("out.wav")};
        arguments.insert(arguments.end(), row.options.begin(), row.options.end());
        ExpectConverted(arguments, "Converted 1 file\n");
        EXPECT_EQ(Sound("out.wav"), Samples({ramp.begin() + static_cast<std::ptrdiff_t>(row.first),
                                             ramp.begin() + static_cast<std::ptrdiff_t>(row.end)}));
    }
}

TEST_F(ConvertCommand, FoldersKeepTheirPlaces) {
    fs::create_directories(folder_ / "in" / "sub");
    Make("in/a.wav", PlainWav({}, Samples({1})));
    Make("in/sub/b.wav", PlainWav({}, Samples({2})));
    Make("in/notes.txt", "no sound");
    for (const char* const jobs : {"1", "3"}) {
        ExpectConverted({At("in"), "-o", At("out") + "/", "--jobs", jobs},
                        "Converted 2 files\nLeft out  1 file that is no sound\n");
        EXPECT_EQ(Sound("out/a.wav"), Samples({1}));
        EXPECT_EQ(Sound("out/sub/b.wav"), Samples({2}));
        EXPECT_FALSE(fs::exists(folder_ / "out" / "notes.wav"));
        fs::remove_all(folder_ / "out");
    }
    // By a pattern.
    ExpectConverted({At("in/a.wav"), At("in/sub/b.wav"), "-o", At("x-{name}.wav")}, "Converted 2 files\n");
    EXPECT_EQ(Sound("x-b.wav"), Samples({2}));
}

TEST_F(ConvertCommand, ManyFilesAtATime) {
    fs::create_directory(folder_ / "in");
    for (int i = 0; i < 40; ++i)
        Make("in/" + std::to_string(i) + ".wav", PlainWav({}, Samples(std::vector<int>(3000, i))));
    ExpectConverted({At("in"), "-o", At("out/"), "--jobs", "8", "--bits", "24"}, "Converted 40 files\n");
    for (int i = 0; i < 40; ++i) {
        const TBytes sound = Sound("out/" + std::to_string(i) + ".wav");
        ASSERT_EQ(sound.size(), 9000u);
        EXPECT_EQ(sound[8998], i);
    }
}

TEST_F(ConvertCommand, WhatTheFileSaysStays) {
    {
        const CLibraryScope library;
        TWavWriterOptions options;
        options.metadata.info = {{"INAM", "A title"}, {"IXYZ", "x"}};
        options.metadata.broadcast.emplace().originator = "us";
        options.metadata.cues = {{.id = 7, .position = 2, .length = 0, .label = "here", .note = ""}};
        CWavWriter writer(PathFromUtf8(At("t.wav").c_str()).c_str(), {WAV_SAMPLE_16BIT, 1, 8000}, options);
        writer.Write(TBytes(32000).data(), 32000);
        writer.Close();
    }
    const auto read = [&](const std::string& name) {
        const CLibraryScope library;
        const CInputStreamSelector source(PathFromUtf8(At(name).c_str()).c_str());
        return ReadWavMetadata(source.GetInputStreamTmp());
    };
    EXPECT_TRUE(Convert({At("t.wav"), "-o", At("whole.wav"), "--bits", "8"}).IsSuccess());
    EXPECT_EQ(read("whole.wav"), read("t.wav"));
    // Places of another sound would be wrong.
    EXPECT_TRUE(Convert({At("t.wav"), "-o", At("part.wav"), "--from", "1"}).IsSuccess());
    EXPECT_TRUE(read("part.wav").cues.empty());
    EXPECT_EQ(read("part.wav").info, read("t.wav").info);
}

TEST_F(ConvertCommand, AFileMayTakeThePlaceOfItsSource) {
    const std::string file = Make("a.wav", PlainWav({}, Samples({256, 512})));
    ExpectConverted({file, "-o", file, "--bits", "8"}, "Converted 1 file\n");
    EXPECT_EQ(Sound("a.wav"), (TBytes{129, 130}));
    EXPECT_EQ(List(), TNames{"a.wav"});
}

TEST_F(ConvertCommand, OneFileThatFailsDoesNotHideTheOthers) {
    const std::string good = Make("good.wav", PlainWav({}, Samples({1})));
    const std::string bad = Make("bad.wav", "RIFF");
    const std::string missing = At("missing.wav");
    fs::create_directory(folder_ / "out");
    const TChildEnd end = Convert({missing, bad, good, "-o", At("out"), "--jobs", "1"});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.output, "Converted 1 file\n");
    EXPECT_EQ(end.errors,
              "vorlund: Cannot open '" + missing + "' for reading: there is no such file; check the name\n" +
                  "vorlund: Cannot decode '" + bad + "': no loaded decoder knows this kind of file\n" +
                  "vorlund: 2 of 3 files were not converted\n");
    EXPECT_EQ(Sound("out/good.wav"), Samples({1}));
    EXPECT_FALSE(fs::exists(folder_ / "out" / "bad.wav"));
}

TEST_F(ConvertCommand, WhatIsAskedForWrongly) {
    const std::string file = Make("a.wav", PlainWav({}, Samples({1})));
    const struct {
        TNames arguments;
        std::string error;
    } rows[] = {
        {{file, "-o", At("x")},
         "The name '" + At("x") +
             "' tells no type; end it in .wav, .aiff, .flac, .mp3, .ogg or .opus, or use --type"},
        {{file, file, "-o", At("x.wav")},
         "'" + file + "' and '" + file + "' would both become '" + At("x.wav") +
             "'; name a folder, or a pattern with {name}"},
        {{file, "-o", At("x.flac")},
         "No loaded encoder writes flac files; the plug-in 'sndfile' may, and 'vorlund plugins' tells why it "
         "is not "
         "loaded"},
        {{file, "-o", At("x.wav"), "--rate", "8000"},
         "Another rate needs the plug-in 'resample', which is not loaded; 'vorlund plugins' tells why"},
        {{file, "-o", At("x.wav"), "--normalise", "-20"},
         "Levels need the plug-in 'measure', which is not loaded; 'vorlund plugins' tells why"},
        {{file, "-o", At("x.wav"), "--quality", "1"}, "WAV files have no quality to choose"},
    };
    for (const auto& row : rows) {
        const TChildEnd end = Convert(row.arguments);
        EXPECT_EQ(end.exitCode, 1u);
        EXPECT_EQ(end.errors.substr(0, end.errors.find('\n')), "vorlund: " + row.error);
    }
    const TNames usage[] = {{"--bits", "12"},  {"--channels", "9"},  {"--channels", "0"}, {"--from", "x"},
                            {"--from", "-1"},  {"--to", "1:2:3:4"},  {"--to", ""},        {"--jobs", "0"},
                            {"--type", "xyz"}, {"--normalise", "3"}, {"--rate", "0"},     {"--rate", "-5"}};
    for (const TNames& options : usage) {
        TNames arguments{file, "-o", At("x.wav")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        EXPECT_EQ(Convert(arguments).exitCode, 2u) << testing::PrintToString(options);
    }
    EXPECT_EQ(Convert({file}).exitCode, 2u);
    EXPECT_EQ(List(), TNames{"a.wav"});
}

TEST_F(ConvertCommand, ToTheStandardOutput) {
    const std::string file = Make("a.wav", PlainWav({}, Samples({1, 2, 3})));
    const TChildEnd end = Convert({file, "-o", "-", "--bits", "8"});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(end.errors, "Converted 1 file\n");
    // With a header that is right from the start.
    EXPECT_EQ(end.output.substr(0, 4), "RIFF");
    EXPECT_EQ(end.output.substr(end.output.find("data")), std::string("data\3\0\0\0\x80\x80\x80\0", 12));
}

} // namespace
} // namespace vorlund::test
