// How far a conversion is: told on a terminal, and nowhere else.
#include "cli/DecodeCommand.h"

#include <regex>

namespace vorlund::test {
namespace {

class Progress : public DecodeCommand {
protected:
    /// Converts so many bytes of silence, and drops it.
    TChildOptions ConvertLong(std::uint32_t size) const {
        const std::string input =
            Make("long.wav",
                 CWavBuilder().RiffSize(size - 8).Format({.bits = 8}).Declare("data", size - 44).Build());
        std::filesystem::resize_file(input, size);
        return {.arguments = {"--no-plugins", "convert", input, "-o", "/dev/null", "--type", "wav", "--bits",
                              "float", "--jobs", "1"},
                .hasTerminal = true};
    }
};

TEST_F(Progress, IsShownOnATerminalAndTakenAway) {
    TChildOptions options = ConvertLong(0x3FFFFF00);
    options.isErrorTerminal = true;
    CChildProcess program("vorlund", options);
    ASSERT_TRUE(program.WaitForTerminal(" s left "));
    const std::string shown = program.GetTerminal();
    const std::regex line(R"(\r\[#* *\] +\d+ %, \d+\.\d MB/s, \d+ s left )");
    EXPECT_TRUE(std::regex_search(shown, line)) << shown;
    // Ctrl-C.
    program.Type("\x03");
    const TChildEnd end = program.Wait();
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.output, "");
    const std::string terminal = program.GetTerminal();
    EXPECT_TRUE(terminal.ends_with("\r" + std::string(80, ' ') + "\rvorlund: Interrupted\r\n")) << terminal;
}

TEST_F(Progress, IsNotWrittenElsewhere) {
    // Longer than the half second before the first line, and not too long for a build that checks threads.
    const TChildOptions options = ConvertLong(0xD000000);
    CChildProcess program("vorlund", options);
    const TChildEnd end = program.Wait();
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(WithoutReturns(end.output), "Converted 1 file\n");
    EXPECT_EQ(program.GetTerminal(), "");
}

} // namespace
} // namespace vorlund::test
