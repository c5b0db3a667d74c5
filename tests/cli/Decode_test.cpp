// The program as its users see it: arguments in; streams, files and an exit code out.
#include "cli/DecodeCommand.h"

using namespace vorlund::test;
namespace fs = std::filesystem;

namespace {

const TWavFormat kStereo{.channels = 2, .samplesPerSec = 8000};

TEST_F(DecodeCommand, ReportsWhatItFound) {
    const std::string input = Make(
        "in.wav", CWavBuilder().Format(kStereo).Chunk("LIST", Ramp(10)).Chunk("data", Ramp(8000)).Build());
    const TChildEnd end = Decode({input});
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(WithoutReturns(end.output), "File      " + input +
                                              "\n"
                                              "Format    audio PCM {47A8ECCB,40364B9F,A014B125,721626DF}\n"
                                              "Channels  2\n"
                                              "Rate      8000 Hz\n"
                                              "Bits      16\n"
                                              "Duration  0.250 s\n"
                                              "Bytes     8000\n"
                                              "Chunks    \"fmt \", \"LIST\", \"data\"\n"
                                              "Chain     vorlund::CFileInputStream > vorlund::CWavDecoder\n");
    EXPECT_EQ(List(), std::vector<std::string>{"in.wav"});
}

TEST_F(DecodeCommand, WritesAWavFile) {
    const TBytes wav = PlainWav(kStereo, Ramp(8000));
    EXPECT_TRUE(Decode({Make("in.wav", wav), "-o", At("out.wav")}).IsSuccess());
    EXPECT_EQ(Load("out.wav"), wav);
    EXPECT_EQ(List(), (std::vector<std::string>{"in.wav", "out.wav"}));
}

TEST_F(DecodeCommand, WavNamesAreFoundInAnyCase) {
    const TBytes wav = PlainWav(kStereo, Ramp(80));
    EXPECT_TRUE(Decode({Make("in.wav", wav), "-o", At("OUT.WAV")}).IsSuccess());
    EXPECT_EQ(Load("OUT.WAV"), wav);
}

TEST_F(DecodeCommand, PadsAnOddSizeAndCountsItInTheHeader) {
    EXPECT_TRUE(Decode({Make("in.wav", PlainWav({.bits = 8}, Ramp(5))), "-o", At("out.wav")}).IsSuccess());
    EXPECT_EQ(Load("out.wav"), CWavBuilder().Format({.bits = 8}).Chunk("data", Ramp(5)).Raw({0}).Build());
}

TEST_F(DecodeCommand, WritesRawBytesToOtherNames) {
    EXPECT_TRUE(Decode({Make("in.wav", PlainWav(kStereo, Ramp(8000))), "-o", At("out.pcm")}).IsSuccess());
    EXPECT_EQ(Load("out.pcm"), Ramp(8000));
}

TEST_F(DecodeCommand, WritesRawBytesToAWavNameWhenAsked) {
    EXPECT_TRUE(
        Decode({"--raw", Make("in.wav", PlainWav(kStereo, Ramp(8000))), "-o", At("out.wav")}).IsSuccess());
    EXPECT_EQ(Load("out.wav"), Ramp(8000));
}

TEST_F(DecodeCommand, WritesNothingButBytesToStandardOutput) {
    // All byte values, so that a text stream would show.
    const TBytes data = Ramp(4096);
    const TChildEnd end = Decode({Make("in.wav", PlainWav(kStereo, data)), "-o", "-"});
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(TBytes(end.output.begin(), end.output.end()), data);
    EXPECT_NE(end.errors.find("Bytes     4096\n"), std::string::npos) << end.errors;
}

TEST_F(DecodeCommand, MayReplaceItsInput) {
    const TBytes wav = CWavBuilder().Format(kStereo).Chunk("LIST", Ramp(10)).Chunk("data", Ramp(80)).Build();
    const std::string file = Make("file.wav", wav);
    EXPECT_TRUE(Decode({file, "-o", file}).IsSuccess());
    EXPECT_EQ(Load("file.wav"), PlainWav(kStereo, Ramp(80)));
    EXPECT_EQ(List(), std::vector<std::string>{"file.wav"});
}

TEST_F(DecodeCommand, StatesTheBytesActuallyWritten) {
    const TBytes wav = CWavBuilder().Format(kStereo).Declare("data", 1000000, Ramp(80)).Build();
    const TChildEnd end = Decode({Make("in.wav", wav), "-o", At("out.wav")});
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_NE(WithoutReturns(end.output).find("Bytes     80\n"), std::string::npos) << end.output;
    EXPECT_EQ(Load("out.wav"), PlainWav(kStereo, Ramp(80)));
}

TEST_F(DecodeCommand, ADurationThatCannotBeToldIsUnknown) {
    const TWavFormat formats[] = {{.channels = 0}, {.samplesPerSec = 0}};
    for (const TWavFormat& format : formats) {
        const TChildEnd end = Decode({Make("in.wav", PlainWav(format, Ramp(80))), "-o", At("out.wav")});
        EXPECT_TRUE(end.IsSuccess());
        EXPECT_NE(WithoutReturns(end.output).find("Duration  unknown\n"), std::string::npos) << end.output;
    }
}

TEST_F(DecodeCommand, AFailureIsOneLineAndLeavesNoOutput) {
    const std::string missing = At("missing.wav");
    const std::string text = Make("text.wav", std::string("no sound in here, only words"));
    const std::string empty = Make("empty.wav", std::string());
    const std::string deep = Make("deep.wav", PlainWav({.bits = 24}, Ramp(6)));
    const std::string floats = Make("float.wav", PlainWav({.tag = 3}, Ramp(8)));
    const std::string noFormat = Make("nofmt.wav", CWavBuilder().Chunk("data", Ramp(8)).Build());
    const std::string noData = Make("nodata.wav", CWavBuilder().Format(kStereo).Build());
    const std::string folder = folder_.string();
    const struct {
        std::string input;
        std::string line;
    } rows[] = {
        {missing, "Cannot open '" + missing + "' for reading: there is no such file; check the name"},
        {folder, "Cannot open '" + folder + "' for reading: it is a folder; name a file in it"},
        {text, "Cannot decode '" + text +
                   "': no loaded decoder knows this kind of file; 'vorlund codecs' lists what can be read"},
        {empty, "Cannot decode '" + empty + "': it is empty; get it anew from where it comes"},
        {deep, "Cannot decode '" + deep +
                   "': WAV: Usupported bits per sample (bits 24); try the plug-in 'sndfile'"},
        {floats, "Cannot decode '" + floats +
                     "': WAV: Unsupported wave format (format tag 3); try the plug-in 'sndfile'"},
        {noFormat, "Cannot decode '" + noFormat +
                       "': WAV: Cannot find fmt chunk (chunk \"fmt \"); try the plug-in 'sndfile'"},
        {noData, "Cannot decode '" + noData +
                     "': WAV: Cannot find data chunk (chunk \"data\"); try the plug-in 'sndfile'"},
    };
    const std::string kept = Make("kept.wav", std::string("what was there before"));
    const std::vector<std::string> before = List();
    for (const auto& row : rows) {
        for (const std::string& output : {At("out.wav"), kept}) {
            const TChildEnd end = Decode({row.input, "-o", output});
            EXPECT_EQ(end.exitCode, 1u) << row.input;
            EXPECT_EQ(end.output, "") << row.input;
            EXPECT_EQ(end.errors, "vorlund: " + row.line + "\n") << row.input;
            EXPECT_EQ(List(), before) << row.input;
        }
    }
    EXPECT_EQ(fs::file_size(kept), 21u);
}

TEST_F(DecodeCommand, AnOutputThatCannotBeWrittenIsOneLine) {
    const std::string output = At("no/such/folder/out.wav");
    const TChildEnd end = Decode({Make("in.wav", PlainWav(kStereo, Ramp(80))), "-o", output});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.errors.rfind("vorlund: Cannot write '", 0), 0u) << end.errors;
    EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1);
    EXPECT_EQ(List(), std::vector<std::string>{"in.wav"});
}

TEST_F(DecodeCommand, WrongArgumentsEndWithTwo) {
    EXPECT_EQ(Decode({}).exitCode, 2u);
    EXPECT_EQ(Decode({"--no-such-option"}).exitCode, 2u);
    EXPECT_EQ(RunChild("vorlund").exitCode, 2u);
    EXPECT_TRUE(RunChild("vorlund", {.arguments = {"--help"}}).IsSuccess());
}

} // namespace
