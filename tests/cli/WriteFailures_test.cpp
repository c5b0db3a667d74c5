// The program when nobody takes what it writes: its exit code, its one line, and what it leaves in the
// folder.
#include "cli/DecodeCommand.h"

namespace vorlund::test {
namespace {

constexpr const char* kRefused = "vorlund: Cannot write to the standard output\n";

class WriteFailures : public DecodeCommand {
protected:
    static TChildEnd RunInto(TChildOutput output, std::vector<std::string> arguments) {
        TChildEnd end = RunProgramAlone({.arguments = std::move(arguments), .output = output});
        std::erase(end.errors, '\r');
        return end;
    }

    const TBytes wav_ = PlainWav({.channels = 2}, Ramp(400));
    const std::string input_ = Make("in.wav", wav_);
};

TEST_F(WriteFailures, StandardOutputThatTakesNothingIsAFailure) {
    const std::vector<std::string> rows[] = {
        {"--version"},
        {"--help"},
        {"decode", "--help"},
        {"decode", input_},
        {"decode", input_, "-o", "-"},
        {"decode", input_, "--format", "f32", "--channels", "1", "-o", "-"},
        {"random", "1"},
        {"random", "100"},
        {"random", "1000000"},
    };
    for (const TChildOutput output : {TChildOutput::Refusing, TChildOutput::Closed}) {
        for (const auto& arguments : rows) {
            const TChildEnd end = RunInto(output, arguments);
            EXPECT_EQ(end.exitCode, 1u) << arguments.front() << ' ' << arguments.back();
            EXPECT_EQ(end.signal, 0) << arguments.front();
            EXPECT_EQ(end.errors, kRefused) << arguments.front() << ' ' << arguments.back();
        }
    }
    EXPECT_EQ(List(), std::vector<std::string>{"in.wav"});
}

TEST_F(WriteFailures, ReportThatIsNotTakenLeavesAWholeFile) {
    for (const TChildOutput output : {TChildOutput::Refusing, TChildOutput::Closed}) {
        const TChildEnd end = RunInto(output, {"decode", input_, "-o", At("out.wav")});
        EXPECT_EQ(end.exitCode, 1u);
        EXPECT_EQ(end.errors, kRefused);
        EXPECT_EQ(Load("out.wav"), wav_);
        EXPECT_EQ(List(), (std::vector<std::string>{"in.wav", "out.wav"}));
        std::filesystem::remove(At("out.wav"));
    }
}

TEST_F(WriteFailures, CommandsThatPrintNothingNeedNoStandardOutput) {
    for (const TChildOutput output : {TChildOutput::Refusing, TChildOutput::Closed}) {
        EXPECT_TRUE(RunInto(output, {"random", "100", "-o", At("noise")}).IsSuccess());
        EXPECT_EQ(Load("noise").size(), 100u);
        EXPECT_TRUE(
            RunInto(output, {"plasma", "--size", "4x4", "--frames", "1", "-o", At("a.y4m")}).IsSuccess());
        EXPECT_EQ(RunInto(output, {"random"}).exitCode, 2u);
    }
}

} // namespace
} // namespace vorlund::test
