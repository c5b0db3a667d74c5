// The four destinations without handlers: system log, terminal, standard streams; each from a child process.
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <map>
#include <string>
#include <syslog.h>
#include <vector>

namespace vorlund::test {
namespace {

constexpr const char* kChild = "debug_child";
const std::string kMixed = "h\u00E9 \u65E5 \U0001F600 \uFFFD end";
const std::string kMixedLines = "first\n" + kMixed + "\n\nlast\n";
const std::string kFields = " | method=child::Method | file=child/File | line=60 | reason=the reason";

TChildEnd RunMode(std::vector<std::string> arguments) {
    return RunChild(kChild, {.arguments = std::move(arguments)});
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        lines.push_back(text.substr(at, end - at));
        if (end == std::string::npos) break;
        at = end + 1;
    }
    return lines;
}

// Standard streams.

struct TStreamRow {
    const char* name;
    std::vector<std::string> arguments;
    std::string output;
    std::string errors;
};

class DebugDefaultsStreams : public testing::TestWithParam<TStreamRow> {};

TEST_P(DebugDefaultsStreams, GetWholeLinesInUtf8) {
    const TChildEnd end = RunMode(GetParam().arguments);
    EXPECT_TRUE(end.IsSuccess()) << end.exitCode;
    EXPECT_EQ(end.output, GetParam().output);
    EXPECT_EQ(end.errors, GetParam().errors);
}

INSTANTIATE_TEST_SUITE_P(
    DebugDefaults, DebugDefaultsStreams,
    testing::Values(TStreamRow{"InitialLocale", {"mixed"}, kMixedLines, kMixedLines},
                    TStreamRow{"Utf8Locale", {"mixed-in-locale", "C.UTF-8"}, kMixedLines, kMixedLines},
                    TStreamRow{"BehindBytes", {"behind-bytes"}, "before " + kMixed + "\nafter\n", ""},
                    TStreamRow{"BeforeAnAbruptEnd", {"abrupt-end"}, "before " + kMixed + "\n", ""},
                    TStreamRow{"BehindWideText", {"behind-wide"}, "before " + kMixed + "\nafter\n", ""},
                    TStreamRow{"BeforeWideText", {"before-wide"}, kMixed + "\nafter\n", ""},
                    TStreamRow{"AfterAHandlerWasTakenBack", {"restored"}, "printed\n", "printed\n"}),
    [](const auto& row) { return row.param.name; });

TEST(DebugDefaults, LinesOfThreadsStayWhole) {
    const TChildEnd end = RunMode({"threads"});
    ASSERT_TRUE(end.IsSuccess());
    for (const std::string& text : {end.output, end.errors}) {
        std::map<std::string, int> counts;
        for (const std::string& line : Lines(text)) ++counts[line];
        ASSERT_EQ(counts.size(), 4u);
        for (int number = 0; number < 4; ++number) {
            const std::string body(300, static_cast<char>('a' + number));
            EXPECT_EQ(counts[std::to_string(number) + ' ' + body], 200);
        }
    }
}

// The system log.

TEST(DebugDefaults, DebuggerOutputIsTheSystemLog) {
    const TChildEnd end = RunMode({"output"});
    ASSERT_TRUE(end.IsSuccess());
    const std::string start = "log " + std::to_string(LOG_USER | LOG_DEBUG) + ": ";
    const std::vector<std::string> expected{start + "plain 100%s", start, start + "caf\u00E9",
                                            start + "Exception: type=CFileAccessException" + kFields};
    EXPECT_EQ(Lines(end.output), expected);
    EXPECT_EQ(end.errors, "");
}

TEST(DebugDefaults, LongestMessageIsLoggedWhole) {
    const TChildEnd end = RunMode({"long-log"});
    ASSERT_TRUE(end.IsSuccess());
    std::string expected = "log " + std::to_string(LOG_USER | LOG_DEBUG) + ": ";
    for (int i = 0; i < 1023; ++i) expected += "\u65E5";
    EXPECT_EQ(end.output, expected + '\n');
}

// The box.

/// What is between the left and right edges of a frame, rows joined by blanks; what is outside is cut.
std::string TextInFrame(const std::string& terminal) {
    std::string text;
    for (const std::string& line : Lines(terminal)) {
        if (line.rfind("| ", 0) != 0) continue;
        std::string row = line.substr(2, line.rfind(" |") - 2);
        row.erase(row.find_last_not_of(' ') + 1);
        text += (text.empty() ? "" : " ") + row;
    }
    return text;
}

const std::string kBoxText = "Exception: type=CBugException" + kFields;
const std::string kButton = "[ OK ]  press Enter";

/// Waits until the whole box is on the terminal, so that no echo of what is typed then falls into it. Returns
/// false when the child ends without it.
bool WaitForBox(CChildProcess& child) {
    if (!child.WaitForTerminal(kButton)) return false;
    const std::string terminal = child.GetTerminal();
    // The upper edge is as long as the lower one, but has a caption in it.
    const std::size_t left = terminal.find('+');
    const std::size_t right = terminal.find("+\r", left + 1);
    return child.WaitForTerminal('+' + std::string(right - left - 1, '-') + "+\r");
}

/// Starts `mode` on a terminal, waits for the box, types `keys`, and returns what the child printed.
struct TBoxRow {
    const char* name;
    const char* mode;
    const char* keys;
    const char* output;
};

class DebugDefaultsBox : public testing::TestWithParam<TBoxRow> {};

TEST_P(DebugDefaultsBox, StandsOnTheTerminalUntilEnter) {
    CChildProcess child(kChild, {.arguments = {GetParam().mode}, .hasTerminal = true});
    ASSERT_TRUE(WaitForBox(child));
    // Nobody has closed it, so nothing was raised.
    child.Type(GetParam().keys);
    const TChildEnd end = child.Wait();
    EXPECT_TRUE(end.IsSuccess()) << end.exitCode;
    const std::vector<std::string> lines = Lines(end.output);
    ASSERT_EQ(lines.size(), 1 + Lines(GetParam().output).size());
    EXPECT_NE(lines[0].find(kBoxText), std::string::npos);
    EXPECT_EQ(end.output.substr(lines[0].size() + 1), GetParam().output);
    EXPECT_EQ(end.errors, "");

    const std::string terminal = child.GetTerminal();
    EXPECT_NE(terminal.find("- Vorlund message -"), std::string::npos) << terminal;
    EXPECT_EQ(TextInFrame(terminal), kBoxText + "  " + kButton);
}

INSTANTIATE_TEST_SUITE_P(DebugDefaults, DebugDefaultsBox,
                         testing::Values(TBoxRow{"Plain", "bug", "\n", "raised\n"},
                                         TBoxRow{"OtherKeysFirst", "bug", "no\n", "raised\n"},
                                         TBoxRow{"EndOfInput", "bug", "\x04", "raised\n"},
                                         TBoxRow{"Interrupted", "interrupted", "\n", "interrupted\n"},
                                         TBoxRow{"RawTerminal", "raw", "x\ry", "raw\nleft: y\n"}),
                         [](const auto& row) { return row.param.name; });

TEST(DebugDefaults, BoxWithoutATerminalReturns) {
    const TChildEnd end = RunMode({"bug"});
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(Lines(end.output).size(), 2u);
    EXPECT_EQ(Lines(end.output).back(), "raised");
    EXPECT_EQ(end.errors, "");
}

TEST(DebugDefaults, BoxFromTheBackgroundDoesNotWait) {
    CChildProcess child(kChild, {.arguments = {"background"}, .hasTerminal = true});
    const TChildEnd end = child.Wait();
    EXPECT_TRUE(end.IsSuccess()) << end.exitCode;
    EXPECT_EQ(Lines(end.output).back(), "from the background");
    EXPECT_EQ(TextInFrame(child.GetTerminal()), kBoxText);
    EXPECT_EQ(child.GetTerminal().find("press Enter"), std::string::npos);
}

TEST(DebugDefaults, BoxFromTheBackgroundDoesNotWaitForAFullTerminal) {
    CChildProcess child(kChild, {.arguments = {"busy-background"}, .hasTerminal = true});
    const TChildEnd end = child.Wait();
    EXPECT_TRUE(end.IsSuccess()) << end.exitCode;
    EXPECT_EQ(Lines(end.output).back(), "from the background");
    EXPECT_EQ(TextInFrame(child.GetTerminal()), "");
}

TEST(DebugDefaults, BoxIsLeftWhenTheTerminalGoes) {
    for (const char* const mode : {"no-output", "no-input"}) {
        CChildProcess child(kChild, {.arguments = {mode}, .hasTerminal = true});
        const bool hasOutput = std::string(mode) == "no-input";
        if (hasOutput) {
            ASSERT_TRUE(WaitForBox(child));
        }
        child.Type("\n");
        const TChildEnd end = child.Wait();
        EXPECT_TRUE(end.IsSuccess()) << mode << ' ' << end.exitCode;
        EXPECT_EQ(Lines(end.output).back(), hasOutput ? "no input" : "no output");
        EXPECT_EQ(TextInFrame(child.GetTerminal()), hasOutput ? kBoxText + "  " + kButton : "");
    }
}

TEST(DebugDefaults, BoxIsLeftWhenTheProcessLeavesTheForeground) {
    CChildProcess child(kChild, {.arguments = {"until-background"}, .hasTerminal = true});
    ASSERT_TRUE(WaitForBox(child));
    kill(static_cast<pid_t>(child.GetProcessId()), SIGUSR1);
    const TChildEnd end = child.Wait();
    EXPECT_TRUE(end.IsSuccess()) << end.exitCode;
    EXPECT_EQ(Lines(end.output).back(), "until the background");
}

TEST(DebugDefaults, BoxIsLeftWhenInputComesInTheBackground) {
    CChildProcess child(kChild, {.arguments = {"background-input"}, .hasTerminal = true});
    ASSERT_TRUE(WaitForBox(child));
    kill(static_cast<pid_t>(child.GetProcessId()), SIGUSR1);
    ASSERT_TRUE(child.WaitForTerminal("taken"));
    child.Type("\n");
    kill(static_cast<pid_t>(child.GetProcessId()), SIGUSR1);
    const TChildEnd end = child.Wait();
    // Reading there would have stopped the process.
    ASSERT_TRUE(end.IsSuccess()) << end.exitCode;
    EXPECT_EQ(Lines(end.output).back(), "input in the background");
}

/// What the terminal shows of a box that is closed by Enter.
std::string ShowAndClose(const char* mode) {
    CChildProcess child(kChild, {.arguments = {mode}, .hasTerminal = true});
    EXPECT_TRUE(WaitForBox(child));
    child.Type("\n");
    EXPECT_TRUE(child.Wait().IsSuccess());
    return child.GetTerminal();
}

TEST(DebugDefaults, BoxIsWholeWhereTheTerminalTakesParts) {
    EXPECT_EQ(ShowAndClose("halves"), ShowAndClose("bug"));
    EXPECT_EQ(ShowAndClose("busy-terminal"), ShowAndClose("bug"));
}

TEST(DebugDefaults, BoxCannotCommandTheTerminal) {
    CChildProcess child(kChild, {.arguments = {"controls"}, .hasTerminal = true});
    ASSERT_TRUE(WaitForBox(child));
    child.Type("\n");
    EXPECT_TRUE(child.Wait().IsSuccess());
    EXPECT_EQ(TextInFrame(child.GetTerminal()), "<?[2J> two rows  " + kButton);
    EXPECT_EQ(child.GetTerminal().find('\x1B'), std::string::npos);
}

// The debugger.

TEST(DebugDefaults, StreamsThatAreFullAreWaitedFor) {
    const TChildEnd end = RunMode({"busy"});
    EXPECT_TRUE(end.IsSuccess()) << end.exitCode;
    EXPECT_EQ(end.output, "late\n");
    EXPECT_EQ(end.errors, "late\n");
}

TEST(DebugDefaults, StreamsThatTakeNothingAreGivenUp) {
    for (const TChildOutput output : {TChildOutput::Refusing, TChildOutput::Closed}) {
        const TChildEnd end = RunChild(kChild, {.arguments = {"mixed"}, .output = output});
        EXPECT_TRUE(end.IsSuccess()) << end.exitCode;
        EXPECT_EQ(end.errors, kMixedLines);
    }
}

TEST(DebugDefaults, BreakTraps) {
    const TChildEnd end = RunMode({"break"});
    EXPECT_EQ(end.signal, SIGTRAP);
    EXPECT_TRUE(end.IsAbnormal());
    EXPECT_EQ(end.output, "");
}

} // namespace
} // namespace vorlund::test
