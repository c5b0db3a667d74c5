// The command "record", on the device that hears silence.
#include "cli/PlayCommand.h"

namespace vorlund::test {
namespace {

const std::string kSilenceWarning =
    "vorlund: warning: there is nothing but silence; is the input muted, or is it "
    "another one of those that 'vorlund devices' lists?\n";

class Record : public PlayCommand {
protected:
    static TChildEnd RecordNull(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"record", "--device", "null"});
        return Run(std::move(arguments));
    }
};

TEST_F(Record, WritesExactlyTheDuration) {
    const auto begin = std::chrono::steady_clock::now();
    const TChildEnd end = RecordNull({"-o", At("out.wav"), "--duration", "0.7", "--rate", "8000"});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_GE(SecondsSince(begin), 0.6);
    EXPECT_EQ(GetWavData(Load("out.wav")), TBytes(5600 * 4));
    EXPECT_EQ(WithoutReturns(end.output),
              "Output    " + At("out.wav") +
                  "\nChannels  2\nRate      8000 Hz\nBits      16\nDuration  0.700 s\n");
    EXPECT_EQ(end.errors, kSilenceWarning);
}

TEST_F(Record, WritesTheBitsThatAreWanted) {
    const std::vector<std::pair<std::string, std::size_t>> sizes{
        {"8", 1}, {"16", 2}, {"24", 3}, {"32", 4}, {"float", 4}};
    for (const auto& [bits, size] : sizes) {
        const TChildEnd end = RecordNull(
            {"-o", At("out.wav"), "--duration", "0.1", "--rate", "8000", "--bits", bits, "--channels", "3"});
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        const std::uint8_t zero = bits == "8" ? 128 : 0;
        EXPECT_EQ(GetWavData(Load("out.wav")), TBytes(800 * 3 * size, zero)) << bits;
    }
}

TEST_F(Record, WritesToTheStandardOutput) {
    const TChildEnd end = RecordNull({"-o", "-", "--duration", "0.1", "--rate", "8000", "--bits", "8"});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    const TBytes file(end.output.begin(), end.output.end());
    EXPECT_EQ(GetWavData(file), TBytes(1600, 128));
    EXPECT_EQ(end.errors,
              "Channels  2\nRate      8000 Hz\nBits      8\nDuration  0.100 s\n" + kSilenceWarning);
    EXPECT_EQ(List(), std::vector<std::string>());
}

TEST_F(Record, NothingIsAWholeFileToo) {
    const TChildEnd end = RecordNull({"-o", At("out.wav"), "--duration", "0"});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(end.errors, "");
    EXPECT_TRUE(Decode({At("out.wav")}).IsSuccess());
    EXPECT_EQ(GetWavData(Load("out.wav")), TBytes());
}

TEST_F(Record, StandardOutputThatTakesNothingIsAFailure) {
    for (const TChildOutput output : {TChildOutput::Refusing, TChildOutput::Closed}) {
        const TChildEnd end = RunProgramAlone(
            {.arguments = {"record", "--device", "null", "-o", "-", "--duration", "60"}, .output = output});
        EXPECT_EQ(end.exitCode, 1u);
        EXPECT_EQ(WithoutReturns(end.errors), "vorlund: Cannot write to the standard output\n");
    }
}

TEST_F(Record, WithoutADeviceTheFileThatIsThereStays) {
    Make("out.wav", std::string("what was there before"));
    const TChildEnd end = Run({"record", "-o", At("out.wav")});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.errors,
              "vorlund: There is no sound device: the plug-in 'audio' is not there; '--device null' "
              "records silence without one\n");
    EXPECT_EQ(Load("out.wav").size(), 21u);
}

TEST_F(Record, WrongPlacesAreOneLine) {
    ExpectRefused({"record", "--device", "null", "-o", At("missing/out.wav")}, 1);
    ExpectRefused({"record", "--device", "null", "--loopback", "-o", At("out.wav")}, 1);
    ExpectRefused({"record", "--device", "file:x.wav", "-o", At("out.wav")}, 1);
    ExpectRefused({"record", "--device", "null", "-o", At("out.flac")}, 2);
    ExpectRefused({"record", "--device", "null"}, 2);
    ExpectRefused({"record", "--device", "null", "-o", At("out.wav"), "--bits", "12"}, 2);
    ExpectRefused({"record", "--device", "null", "-o", At("out.wav"), "--channels", "9"}, 2);
    ExpectRefused({"record", "--device", "null", "-o", At("out.wav"), "--duration", "x"}, 2);
}

} // namespace
} // namespace vorlund::test
