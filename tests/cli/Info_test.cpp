// The command "info": what it says about files, as lines and as JSON, and what it draws.
#include "cli/DecodeCommand.h"

#include "support/LibraryScope.h"

#include <vorlund/Path.h>
#include <vorlund/WavWriter.h>

#include <sstream>

namespace vorlund::test {
namespace {

class InfoCommand : public DecodeCommand {
protected:
    static TChildEnd Info(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "info");
        TChildEnd end = Run(std::move(arguments));
        end.output = WithoutReturns(end.output);
        return end;
    }
    /// The lines about a file that can be decoded, without the one that names it.
    std::string Describe(const std::string& name, const TBytes& bytes) const {
        const TChildEnd end = Info({Make(name, bytes)});
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        EXPECT_EQ(end.output.rfind("File      ", 0), 0U);
        return end.output.substr(end.output.find('\n') + 1);
    }
    /// The lines that begin with a word.
    static std::vector<std::string> Find(const std::string& output, const std::string& label) {
        std::vector<std::string> found;
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with(label + ' ')) found.push_back(line.substr(10));
        }
        return found;
    }
    /// The warnings about a file, which may be one that cannot be decoded.
    std::vector<std::string> Warnings(const std::string& name, const TBytes& bytes) const {
        return Find(Info({Make(name, bytes)}).output, "Warning");
    }
};

using TLines = std::vector<std::string>;

TBytes Ramp(std::size_t size) {
    TBytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i);
    return bytes;
}

TEST_F(InfoCommand, WavFile) {
    const TBytes bytes = CWavBuilder()
                             .Format({.channels = 2})
                             .Chunk("LIST", TBytes(10))
                             .Chunk("data", Ramp(4000))
                             .Chunk("LIST", TBytes(4))
                             .Build();
    EXPECT_EQ(Describe("a.wav", bytes), "Container WAV\n"
                                        "Size      4074 bytes\n"
                                        "Format    16-bit PCM, 2 channels, 44100 Hz\n"
                                        "Duration  0.023 s, 1000 frames\n"
                                        "Stored as PCM, 16 bits, 2 channels, 44100 Hz\n"
                                        "Sound     4000 bytes\n"
                                        "Chunk     \"fmt \": 16 bytes at 20\n"
                                        "Chunk     \"LIST\": 10 bytes at 44\n"
                                        "Chunk     \"data\": 4000 bytes at 62\n"
                                        "Chunk     \"LIST\" #2: 4 bytes at 4070\n"
                                        "Chain     vorlund::CFileInputStream > vorlund::CWavDecoder\n");
}

TEST_F(InfoCommand, ChunksThatAreAlikeAreOneLine) {
    TBytes zeros(8 * 100000);
    const TChildEnd end = Info({Make("z.wav", CWavBuilder().Format({}).Raw(zeros).Build())});
    EXPECT_EQ(Find(end.output, "Chunk"),
              (TLines{"\"fmt \": 16 bytes at 20",
                      "\"\\x00\\x00\\x00\\x00\" to #100000: 0 bytes each, the first at 44"}));
    // Many different ones are counted, and those at the beginning named.
    CWavBuilder many;
    many.Format({}).Chunk("data", TBytes(2));
    for (int i = 0; i < 3000; ++i) many.Chunk(i % 2 == 0 ? "even" : "odd ", {});
    const TChildEnd other = Info({Make("m.wav", many.Build())});
    const TLines lines = Find(other.output, "Chunk");
    ASSERT_EQ(lines.size(), 65u);
    EXPECT_EQ(lines[5], "\"odd \" #2: 0 bytes at 78");
    EXPECT_EQ(lines[64], "... and 2938 more");
    // Scripts get a thousand rows, and the number.
    const std::string json = Info({"--json", At("m.wav")}).output;
    EXPECT_NE(json.find("\"chunkCount\": 3002"), std::string::npos);
    EXPECT_NE(json.find("\"number\": 499"), std::string::npos);
    EXPECT_EQ(json.find("\"number\": 500"), std::string::npos);
}

TEST_F(InfoCommand, WhatIsWrongWithAFile) {
    const TWavFormat mono{.bits = 8};
    const struct {
        const char* name;
        TBytes bytes;
        TLines warnings;
    } rows[] = {
        {"right.wav", PlainWav(mono, Ramp(10)), {}},
        {"truncated.wav",
         CWavBuilder().Format(mono).Declare("data", 1000, Ramp(10)).Build(),
         {"The chunk \"data\" ends at byte 54 instead of 1044"}},
        {"head.wav",
         CWavBuilder().RiffSize(40).Format(mono).Chunk("data", Ramp(10)).Build(),
         {"The head declares 48 bytes, the file has 54"}},
        // Recorders that do not know how long they will run.
        {"endless.wav", CWavBuilder().RiffSize(~0u).Format(mono).Declare("data", ~0u, Ramp(10)).Build(), {}},
        {"padding.wav",
         CWavBuilder().Format(mono).Chunk("odd ", Ramp(3)).Chunk("data", Ramp(10)).Build(),
         {"No padding behind the chunk \"odd \" of odd size"}},
        {"last.wav", PlainWav(mono, Ramp(11)), {}},
        {"trailing.wav",
         CWavBuilder().Format(mono).Chunk("data", Ramp(10)).Raw({1, 2, 3}).Build(),
         {"3 bytes behind the last chunk are no chunk"}},
        {"killed.wav",
         CWavBuilder().RiffSize(0).Format(mono).Declare("data", 0, {}).Build(),
         {"The head declares 8 bytes, the file has 44"}},
        {"nothing.wav", CWavBuilder().Build(), {"There is no chunk \"fmt \"", "There is no chunk \"data\""}},
        {"short.wav",
         CWavBuilder().Chunk("fmt ", Ramp(12)).Chunk("data", Ramp(10)).Build(),
         {"The chunk \"fmt \" is too short", "There is no chunk \"fmt \""}},
        {"sound.mp3", PlainWav(mono, Ramp(10)), {"The name ends in '.mp3', and the file is WAV"}},
        {"sound.WAVE", PlainWav(mono, Ramp(10)), {}},
        {"sound.dat", PlainWav(mono, Ramp(10)), {}},
    };
    for (const auto& row : rows) EXPECT_EQ(Warnings(row.name, row.bytes), row.warnings) << row.name;
}

TEST_F(InfoCommand, LargeFilesTakeNoTime) {
    // Of programs that write their sizes at the end, or not at all, and were killed; the sound is silence.
    constexpr std::uint64_t kSize = std::uint64_t{10} << 30;
    // Nearly all of it for systems that start programs slowly: reading every head takes minutes.
    constexpr std::chrono::seconds kLimit{10};
    const std::string path = At("large.wav");
    const struct {
        const char* what;
        CWavBuilder head;
        std::uint32_t riff;
        std::uint32_t data;
        const char* sound;
    } rows[] = {
        {"nothing is said", {}, 0, 0, "10737418196 bytes of 0 that are declared"},
        {"nobody knows", {}, ~0u, ~0u, "10737418196 bytes of 4294967295 that are declared"},
        {"only the sound is not known", {}, ~0u, 0, "10737418196 bytes of 0 that are declared"},
        {"with room", CWavBuilder().Chunk("JUNK", TBytes(28)), ~0u, ~0u,
         "10737418160 bytes of 4294967295 that are declared"},
        {"the most that some dare to say", {}, 0x7FFFFFFF, 0x7FFFFFFF - 36, "2147483611 bytes"},
        {"a size of 32 bits was too small", {}, 0x80000000 - 8, 0x80000000 - 44, "2147483604 bytes"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        CWavBuilder head = row.head;
        Make("large.wav",
             head.RiffSize(row.riff).Format({.channels = 2}).Declare("data", row.data, {}).Build());
        std::filesystem::resize_file(path, kSize);
        const TChildEnd end = RunProgramAlone({.arguments = {"info", path}, .limit = kLimit});
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        const std::string output = WithoutReturns(end.output);
        EXPECT_EQ(Find(output, "Sound"), TLines{row.sound});
        EXPECT_EQ(Find(output, "Chain"), TLines{"vorlund::CFileInputStream > vorlund::CWavDecoder"});
    }
}

TEST_F(InfoCommand, DurationIsThatOfWhatIsThere) {
    const std::string lines =
        Describe("t.wav", CWavBuilder().Format({.bits = 8}).Declare("data", 44100, Ramp(4410)).Build());
    EXPECT_EQ(Find(lines, "Duration"), (TLines{"0.100 s, 4410 frames"}));
    EXPECT_EQ(Find(lines, "Sound"), (TLines{"4410 bytes of 44100 that are declared"}));
}

TEST_F(InfoCommand, RelativesOfRiff) {
    // Sizes of 64 bits; the byte order of others.
    TBytes sizes;
    for (const std::uint32_t word : {1000u, 0u, 44u, 0u, 22u, 0u, 0u}) Append32(sizes, word);
    const TBytes rf64 = CWavBuilder()
                            .Header("RF64", "WAVE")
                            .RiffSize(~0u)
                            .Chunk("ds64", sizes)
                            .Format({})
                            .Declare("data", ~0u, Ramp(44))
                            .Build();
    const TChildEnd end = Info({Make("a.wav", rf64)});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(Find(end.output, "Sound"), (TLines{"44 bytes"}));
    EXPECT_EQ(Find(end.output, "Container"), (TLines{"RF64"}));
    EXPECT_EQ(Find(end.output, "Warning"), (TLines{"The head declares 1008 bytes, the file has 124"}));
    EXPECT_EQ(Find(end.output, "Decoding"),
              (TLines{"not possible: RF64: no loaded decoder reads it; try the plug-in 'sndfile'"}));

    TBytes rifx;
    AppendText(rifx, "RIFX");
    const auto append = [&rifx](std::uint32_t number, int bytes) {
        while (--bytes >= 0) rifx.push_back(static_cast<std::uint8_t>(number >> 8 * bytes));
    };
    append(36 + 6, 4);
    AppendText(rifx, "WAVEfmt ");
    append(16, 4);
    append(1, 2);
    append(3, 2);
    append(48000, 4);
    append(48000 * 6, 4);
    append(6, 2);
    append(16, 2);
    AppendText(rifx, "data");
    append(6, 4);
    rifx.resize(rifx.size() + 6);
    const TChildEnd other = Info({Make("b.wav", rifx)});
    EXPECT_EQ(Find(other.output, "Stored as"), (TLines{"PCM, 16 bits, 3 channels, 48000 Hz"}));
    EXPECT_EQ(Find(other.output, "Container"), (TLines{"WAV (RIFX)"}));
    EXPECT_EQ(Find(other.output, "Warning"), TLines{});
}

TEST_F(InfoCommand, ExtensibleFormat) {
    TBytes format = TWavFormat{.tag = 0xFFFE, .channels = 6, .samplesPerSec = 96000, .bits = 32}.Record();
    Append16(format, 22);
    Append16(format, 24);
    Append32(format, 0x3F);
    Append16(format, 3);
    format.resize(40);
    const TChildEnd end =
        Info({Make("e.wav", CWavBuilder().Chunk("fmt ", format).Chunk("data", {}).Build())});
    EXPECT_EQ(Find(end.output, "Stored as"),
              (TLines{"float, 32 bits (24 valid), 6 channels, 96000 Hz, extensible, channel mask 0x3F"}));
}

TEST_F(InfoCommand, FilesThatCannotBeDecodedAreToldOfAllTheSame) {
    const TChildEnd end = Info(
        {Make("a.txt", "hello"), Make("a.wav", PlainWav({}, Ramp(8))), Make("a.png", "\x89PNG\r\n\x1A\n")});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(Find(end.output, "Container"), (TLines{"unknown", "WAV", "PNG"}));
    EXPECT_EQ(Find(end.output, "Decoding"),
              (TLines{"not possible: no loaded decoder knows this kind of file",
                      "not possible: PNG: no loaded decoder reads it; try the plug-in 'image'"}));
    EXPECT_EQ(end.errors, "vorlund: 2 of 3 files cannot be decoded\n");
    // An empty line between two files.
    EXPECT_NE(end.output.find("\n\nFile      "), std::string::npos);
    EXPECT_EQ(Info({At("a.txt")}).errors, "vorlund: Cannot decode '" + At("a.txt") + "'\n");
}

TEST_F(InfoCommand, AFileThatCannotBeOpenedDoesNotHideTheOthers) {
    const std::string missing = At("missing.wav");
    EXPECT_EQ(Info({missing}).errors,
              "vorlund: Cannot open '" + missing + "' for reading: there is no such file; check the name\n");
    const TChildEnd end = Info({missing, Make("a.wav", PlainWav({}, Ramp(8)))});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(Find(end.output, "Container"), TLines{"WAV"});
    EXPECT_EQ(end.errors,
              "vorlund: Cannot open '" + missing +
                  "' for reading: there is no such file\nvorlund: 1 of 2 files cannot be decoded\n");
}

TEST_F(InfoCommand, JsonOfAFile) {
    const TChildEnd end = Info({"--json", Make("a.wav", PlainWav({.channels = 2}, Ramp(8)))});
    ASSERT_TRUE(end.IsSuccess()) << end.errors;
    for (const char* part : {"\"container\": \"WAV\"",
                             "\"size\": 52",
                             "\"kind\": \"sound\"",
                             "\"sampleFormat\": \"integer\"",
                             "\"bits\": 16",
                             "\"channels\": 2",
                             "\"rate\": 44100",
                             "\"frames\": 2",
                             "\"seconds\": 4.5351473922902495e-05",
                             "\"form\": \"RIFF\"",
                             "\"declaredSize\": 52",
                             "\"declaredSound\": 8",
                             "\"foundSound\": 8",
                             "\"chunkCount\": 2",
                             "\"name\": \"data\"",
                             "\"offset\": 44",
                             "\"levels\": null",
                             "\"failure\": null",
                             "\"warnings\": []",
                             "\"vorlund::CWavDecoder\""})
        EXPECT_NE(end.output.find(part), std::string::npos) << part << '\n' << end.output;
}

TEST_F(InfoCommand, TextsAndPlacesOfAWavFile) {
    {
        const CLibraryScope library;
        TWavWriterOptions options;
        options.metadata.info = {{"INAM", "A title"}, {"IXYZ", "two\nlines"}};
        options.metadata.broadcast.emplace().originator = "us";
        options.metadata.cues = {{.id = 7, .position = 2, .length = 3, .label = "here", .note = ""}};
        CWavWriter writer(PathFromUtf8(At("t.wav").c_str()).c_str(), {WAV_SAMPLE_16BIT, 1, 8000}, options);
        writer.Write(Ramp(20).data(), 20);
        writer.Close();
    }
    const TChildEnd end = Info({At("t.wav")});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(Find(end.output, "Tag"), (TLines{"title: A title", "IXYZ: two lines", "originator: us"}));
    EXPECT_EQ(Find(end.output, "Cue"), (TLines{"frame 2 to 5: here"}));
    EXPECT_EQ(Find(end.output, "Warning"), TLines{});
    const std::string json = Info({"--json", At("t.wav")}).output;
    for (const char* part : {"\"name\": \"title\"", "\"text\": \"two\\u000alines\"", "\"position\": 2"})
        EXPECT_NE(json.find(part), std::string::npos) << part << '\n' << json;
}

TEST_F(InfoCommand, Peaks) {
    // Two channels of 8 bits: a ramp, and silence with one sample.
    TBytes samples;
    for (int i = 0; i < 10; ++i) samples.insert(samples.end(), {static_cast<std::uint8_t>(28 + 20 * i), 128});
    samples[2 * 7 + 1] = 255;
    const std::string file =
        Make("p.wav", PlainWav({.channels = 2, .samplesPerSec = 8000, .bits = 8}, samples));
    const std::string head = "{\"version\":2,\"channels\":2,\"sample_rate\":8000,";
    const std::string expected = head + "\"samples_per_pixel\":4,\"bits\":8,\"length\":3,"
                                        "\"data\":[-100,-40,0,0,-20,40,0,127,60,80,0,0]}\n";
    EXPECT_TRUE(Info({"--peaks", At("p.json"), "--points", "3", file}).IsSuccess());
    const TBytes json = Load("p.json");
    EXPECT_EQ(WithoutReturns({json.begin(), json.end()}), expected);
    // On the standard output, with the lines elsewhere.
    const TChildEnd end = Info({"--peaks", "-", "--points", "3", file});
    EXPECT_EQ(end.output, expected);
    EXPECT_NE(end.errors.find("Container WAV"), std::string::npos);
    // More points than there are frames.
    const std::string many = Info({"--peaks", "-", file}).output;
    EXPECT_EQ(
        many.rfind(head + "\"samples_per_pixel\":1,\"bits\":8,\"length\":10,\"data\":[-100,-100,0,0,-80,", 0),
        0U);
    // And of nothing.
    const TChildEnd none = Info({"--peaks", "-", Make("n.wav", PlainWav({}, {}))});
    EXPECT_NE(none.output.find("\"length\":0,\"data\":[]}"), std::string::npos);
}

TEST_F(InfoCommand, WhatIsAskedForWrongly) {
    const std::string file = Make("a.wav", PlainWav({}, Ramp(8)));
    const auto error = [](const std::vector<std::string>& arguments) { return Info(arguments).errors; };
    EXPECT_EQ(error({"--peaks", At("x"), file, file}), "vorlund: --picture and --peaks are for one file\n");
    EXPECT_EQ(error({"--levels", file}),
              "vorlund: Levels need the plug-in 'measure', which is not loaded; 'vorlund "
              "plugins' tells why\n");
    EXPECT_EQ(Info({"--points", "5", file}).exitCode, 2u);
    EXPECT_EQ(Info({"--peaks", "-", "--points", "0", file}).exitCode, 2u);
    EXPECT_EQ(Info({}).exitCode, 2u);
    EXPECT_EQ(Info({"--peaks", At("no/such/folder"), file}).exitCode, 1u);
    EXPECT_EQ(List(), TLines{"a.wav"});
}

} // namespace
} // namespace vorlund::test
