// The command "record" on a terminal: its line, its keys, and a whole file whatever ends it.
#include "cli/PlayedTerminal.h"

#include <regex>

namespace vorlund::test {
namespace {

class RecordOnTerminal : public PlayedTerminal {
protected:
    TChildOptions RecordNull() const {
        return OnTerminal(
            {"record", "--device", "null", "-o", At("out.wav"), "--rate", "8000", "--bits", "8"});
    }

    /// Frames of the file that was recorded, which is silence.
    std::size_t CountFrames() const {
        const TBytes data = GetWavData(Load("out.wav"));
        EXPECT_EQ(data, TBytes(data.size(), 128));
        EXPECT_EQ(data.size() % 2, 0u);
        return data.size() / 2;
    }
};

TEST_F(RecordOnTerminal, EveryEndLeavesAWholeFile) {
    const std::vector<std::function<void(CChildProcess&)>> ends{
        [](CChildProcess& program) { program.Type("\x03"); },
        [](CChildProcess& program) { program.Type("q"); },
        [](CChildProcess& program) { Send(program, SIGTERM); },
        [](CChildProcess& program) { Send(program, SIGHUP); }};
    for (const auto& end : ends) {
        CChildProcess program("vorlund", RecordNull());
        const std::string before = program.GetFirstTerminalSettings();
        // A machine with much to do leaves out tenths.
        ASSERT_TRUE(program.WaitForTerminal("Recording  0:01."));
        ExpectRaw(program, before);
        end(program);
        const TChildEnd done = program.Wait();
        EXPECT_TRUE(done.IsSuccess());
        EXPECT_EQ(program.GetTerminalSettings(), before);
        const std::size_t frames = CountFrames();
        EXPECT_GE(frames, 4000u);
        char duration[64];
        std::snprintf(duration, sizeof duration, "\nDuration  %.3f s\n", static_cast<double>(frames) / 8000);
        EXPECT_NE(done.output.find(duration), std::string::npos) << done.output;
    }
}

TEST_F(RecordOnTerminal, ShowsTimeAndLevel) {
    CChildProcess program("vorlund", RecordNull());
    ASSERT_TRUE(program.WaitForTerminal("Recording  0:00."));
    program.Type(" ");
    ASSERT_TRUE(program.WaitForTerminal("Paused     0:00."));
    const std::size_t paused = program.GetTerminal().size();
    program.Type(" ");
    ASSERT_TRUE(program.WaitForTerminal("Recording  0:00.", paused));
    program.Type("q");
    EXPECT_TRUE(program.Wait().IsSuccess());
    const std::regex line(R"(\rRecording  0:00\.\d  \[                    \] -99\.9 dB)");
    EXPECT_TRUE(std::regex_search(program.GetTerminal(), line)) << program.GetTerminal();
}

TEST_F(RecordOnTerminal, KilledItLeavesAllButTheLastSecond) {
    CChildProcess program("vorlund", RecordNull());
    ASSERT_TRUE(program.WaitForTerminal("Recording  0:03."));
    program.Kill();
    EXPECT_EQ(program.Wait().signal, SIGKILL);
    // The file opens as it is.
    const TChildEnd end = Decode({At("out.wav")});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_GE(CountFrames(), 8000u * 15 / 10);
}

TEST_F(RecordOnTerminal, InterruptedPipeHasItsSound) {
    CChildProcess program("vorlund", OnTerminal({"record", "--device", "null", "-o", "-", "--rate", "8000"}));
    ASSERT_TRUE(program.WaitForTerminal("Recording  0:01."));
    program.Type("q");
    const TChildEnd end = program.Wait();
    EXPECT_TRUE(end.IsSuccess());
    // As long as a header can say, and then what came.
    const std::size_t data = end.output.find("data");
    ASSERT_NE(data, std::string::npos);
    EXPECT_GE(end.output.size() - data - 8, 4000u * 4);
}

} // namespace
} // namespace vorlund::test
