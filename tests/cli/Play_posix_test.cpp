// The command "play" on a terminal: its line, each key, and the terminal as it was on every way out.
#include "cli/PlayedTerminal.h"

#include <regex>

namespace vorlund::test {
namespace {

class PlayOnTerminal : public PlayedTerminal {
protected:
    /// Types and waits until what was not there before has come.
    static void Press(CChildProcess& program, const std::string& keys, const std::string& answer) {
        const std::size_t before = program.GetTerminal().size();
        program.Type(keys);
        EXPECT_TRUE(program.WaitForTerminal(answer, before)) << keys << ": " << program.GetTerminal();
    }

    /// Plays without an end, waits for the line, and ends it by `stop`. Returns the end; expects the terminal
    /// as it was.
    TChildEnd PlayUntil(const std::function<void(CChildProcess&)>& stop) const {
        CChildProcess program("vorlund", OnTerminal({"play", MakeLong("long.wav"), "--device", "null"}));
        const std::string before = program.GetFirstTerminalSettings();
        EXPECT_TRUE(program.WaitForTerminal("Playing   0:00."));
        ExpectRaw(program, before);
        stop(program);
        const TChildEnd end = program.Wait();
        EXPECT_EQ(program.GetTerminalSettings(), before);
        return end;
    }
};

TEST_F(PlayOnTerminal, ShowsTimeAndLevel) {
    // A square wave of a quarter of full scale.
    TBytes samples;
    for (int i = 0; i < 4000; ++i) samples.push_back(i % 2 ? 96 : 160);
    const std::string file = MakeWav("loud.wav", samples, {.samplesPerSec = kRate, .bits = 8});
    CChildProcess program("vorlund", OnTerminal({"play", file, "--device", "null"}));
    EXPECT_TRUE(program.WaitForTerminal("0:03."));
    const TChildEnd end = program.Wait();
    EXPECT_TRUE(end.IsSuccess());
    const std::string shown = program.GetTerminal();
    const std::regex line(R"(\rPlaying   0:0[0-4]\.\d / 0:04\.0  \[################    \] -12\.0 dB  100 %)");
    EXPECT_TRUE(std::regex_search(shown, line)) << shown;
    // Nothing of it stays.
    EXPECT_TRUE(std::regex_search(shown, std::regex("\r +\r$"))) << shown;
    EXPECT_EQ(end.output, "File      " + file + "\nPlayed    4.000 s\n");
}

TEST_F(PlayOnTerminal, NothingOfItIsWrittenElsewhere) {
    const std::string file = MakeLong("short.wav", 1);
    CChildProcess program(
        "vorlund", {.arguments = {"--no-plugins", "play", file, "--device", "null"}, .hasTerminal = true});
    const TChildEnd end = program.Wait();
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(program.GetTerminal(), "");
}

TEST_F(PlayOnTerminal, EveryKeyDoesWhatItShould) {
    std::vector<std::string> arguments{"play"};
    for (const char* const name : {"1.wav", "2.wav", "3.wav"}) arguments.push_back(MakeLong(name));
    arguments.insert(arguments.end(), {"--device", "null"});
    CChildProcess program("vorlund", OnTerminal(arguments));
    const std::string before = program.GetFirstTerminalSettings();
    ASSERT_TRUE(program.WaitForTerminal("Playing   1/3  0:00."));
    Press(program, " ", "Paused    1/3  0:0");
    Press(program, " ", "Playing   1/3  0:0");
    Press(program, "\x1B[C\x1B[C\x1B[C\x1B[C\x1B[C\x1B[C\x1B[C\x1B[C\x1B[C\x1B[C\x1B[C\x1B[C", "1/3  1:0");
    Press(program, "\x1B[D\x1B[D\x1B[D\x1B[D\x1B[D\x1B[D", "1/3  0:3");
    // Not before the beginning.
    Press(program, std::string(8 * 3, ' ').replace(0, 24, "\x1B[D\x1B[D\x1B[D\x1B[D\x1B[D\x1B[D\x1B[D\x1B[D"),
          "1/3  0:00.");
    Press(program, "n", "2/3  0:00.");
    Press(program, "\x1B[A", "3/3  0:00.");
    Press(program, "p", "2/3  0:00.");
    Press(program, "\x1B[B", "1/3  0:00.");
    Press(program, "\x1BOA", "2/3  0:00.");
    Press(program, "+", " 105 %");
    Press(program, "-", " 100 %");
    Press(program, "--", " 90 %");
    // What means nothing.
    program.Type("xyz\x1B[15~\x1B[1;5C");
    Press(program, "pp", "1/3  0:00.");
    program.Type("q");
    const TChildEnd end = program.Wait();
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(program.GetTerminalSettings(), before);
}

TEST_F(PlayOnTerminal, JumpBehindTheEndGoesToTheNextFile) {
    const std::string first = MakeLong("1.wav", 20);
    const std::string second = MakeLong("2.wav", 20);
    CChildProcess program("vorlund", OnTerminal({"play", first, second, "--device", "null"}));
    ASSERT_TRUE(program.WaitForTerminal("1/2  0:00."));
    Press(program, "\x1B[C\x1B[C\x1B[C\x1B[C", "2/2  0:0");
    // Behind the last one nothing is left.
    program.Type("n");
    const TChildEnd end = program.Wait();
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(end.output.substr(0, end.output.find("Played")),
              "File      " + first + "\nFile      " + second + "\n");
}

TEST_F(PlayOnTerminal, QuitAndEscapeEnd) {
    for (const char* const key : {"q", "\x1B"}) {
        const TChildEnd end = PlayUntil([key](CChildProcess& program) { program.Type(key); });
        EXPECT_TRUE(end.IsSuccess());
        EXPECT_NE(end.output.find("\nPlayed    "), std::string::npos) << end.output;
    }
}

TEST_F(PlayOnTerminal, ControlCEndsCleanly) {
    const TChildEnd end = PlayUntil([](CChildProcess& program) { program.Type("\x03"); });
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_NE(end.output.find("\nPlayed    "), std::string::npos) << end.output;
}

TEST_F(PlayOnTerminal, TerminationLeavesTheTerminalAsItWas) {
    for (const int signal : {SIGTERM, SIGHUP}) {
        const TChildEnd end = PlayUntil([signal](CChildProcess& program) { Send(program, signal); });
        EXPECT_TRUE(end.IsSuccess()) << signal;
    }
}

TEST_F(PlayOnTerminal, SignalsThatKillLeaveTheTerminalAsItWas) {
    for (const int signal : {SIGQUIT, SIGABRT}) {
        const TChildEnd end = PlayUntil([signal](CChildProcess& program) { Send(program, signal); });
        EXPECT_EQ(end.signal, signal);
    }
}

TEST_F(PlayOnTerminal, FailuresLeaveTheTerminalAsItWas) {
    CChildProcess program("vorlund",
                          OnTerminal({"play", MakeLong("long.wav"), At("missing.wav"), "--device", "null"}));
    const std::string before = program.GetFirstTerminalSettings();
    EXPECT_TRUE(program.WaitForTerminal("Playing   1/2  0:00."));
    program.Type("q");
    EXPECT_EQ(program.Wait().exitCode, 1u);
    EXPECT_EQ(program.GetTerminalSettings(), before);
    EXPECT_NE(program.GetTerminal().find("vorlund: 1 of 2 files were not played\r\n"), std::string::npos);
}

TEST_F(PlayOnTerminal, FullDeviceIsOneLine) {
    for (const char* const command : {"play", "record"}) {
        std::vector<std::string> arguments{command};
        if (command == std::string("play"))
            arguments.insert(arguments.end(), {MakeLong("long.wav"), "--device", "file:/dev/full"});
        else
            arguments.insert(arguments.end(), {"--device", "null", "-o", "/dev/full"});
        const TChildEnd end = Run(arguments);
        EXPECT_EQ(end.exitCode, 1u);
        EXPECT_EQ(end.errors, "vorlund: Cannot write '/dev/full'\n");
    }
}

// A shell with jobs, as nobody else may stop and continue a process at its terminal.
TEST_F(PlayOnTerminal, ControlZStopsWithTheTerminalAsItWas) {
    const std::string script =
        Make("script", "set -m\n" + BesideProgram("vorlund").string() + " --no-plugins play " +
                           MakeLong("long.wav") + " --device null\n" +
                           "stty -g <&4 >&4\necho stopped >&4\nread line <&4\nfg >&4\n" +
                           "echo done >&4\nread line <&4\n");
    CChildProcess shell("/bin/sh", {.arguments = {script}, .hasTerminal = true, .isErrorTerminal = true});
    const std::string before = shell.GetFirstTerminalSettings();
    ASSERT_TRUE(shell.WaitForTerminal("Playing   0:00."));
    shell.Type("\x1A");
    ASSERT_TRUE(shell.WaitForTerminal("stopped"));
    EXPECT_EQ(shell.GetTerminalSettings(), before);
    const std::size_t stopped = shell.GetTerminal().size();
    shell.Type("\n");
    ASSERT_TRUE(shell.WaitForTerminal("Playing   0:0", stopped)) << shell.GetTerminal();
    ExpectRaw(shell, before);
    shell.Type("q");
    ASSERT_TRUE(shell.WaitForTerminal("done", stopped)) << shell.GetTerminal();
    EXPECT_EQ(shell.GetTerminalSettings(), before);
    shell.Type("\n");
    EXPECT_FALSE(shell.Wait().hasTimedOut);
}

// Who has no right to the terminal leaves it alone.
TEST_F(PlayOnTerminal, InTheBackgroundItReadsNoKeys) {
    const std::string script =
        Make("script", "set -m\n" + BesideProgram("vorlund").string() + " --no-plugins play " +
                           MakeLong("short.wav", 1) + " --device null &\nwait\necho done >&4\n");
    CChildProcess shell("/bin/sh", {.arguments = {script}, .hasTerminal = true, .isErrorTerminal = true});
    const std::string before = shell.GetFirstTerminalSettings();
    ASSERT_TRUE(shell.WaitForTerminal("Playing   0:00."));
    EXPECT_EQ(shell.GetTerminalSettings(), before);
    EXPECT_TRUE(shell.WaitForTerminal("done"));
    EXPECT_TRUE(shell.Wait().IsSuccess());
}

} // namespace
} // namespace vorlund::test
