// The program when the system gives it no memory: one line and an exit code, wherever that happens.
#include "cli/DecodeCommand.h"
#include "cli/RefusedMemory.h"

namespace vorlund::test {
namespace {

class ProgramOutOfMemory : public DecodeCommand, public testing::WithParamInterface<bool> {};

TEST_P(ProgramOutOfMemory, EndsWithOneLine) {
    const bool isOnce = GetParam();
    const std::string input = Make("in.wav", PlainWav({.channels = 2, .samplesPerSec = 8000}, Ramp(8000)));
    const std::vector<std::string> arguments{"--plugin-path", folder_.string(), "decode", input, "-o",
                                             At("out.wav")};
    const TBytes whole = [&] {
        EXPECT_TRUE(Run(arguments).IsSuccess());
        return Load("out.wav");
    }();
    // What the loader and the program's own objects take comes first, before the library and `main`. So many
    // in a row that nobody misses are behind the last allocation.
    constexpr int kLast = 50;
    constexpr int kMaxRefusals = 20000;
    int failures = 0;
    int number = 1;
    int step = 1;
    for (int inARow = 0; inARow < kLast && number <= kMaxRefusals && !HasFailure(); number += step) {
        step = number < GetLastOfEveryRefusal() ? 1 : 17;
        std::filesystem::remove(At("out.wav"));
        const TChildEnd end = RunWithRefusedMemory(arguments, number, isOnce);
        EXPECT_FALSE(end.IsAbnormal() || end.hasTimedOut) << number << ": " << end.errors;
        if (end.IsSuccess()) {
            // Something can do without: also without a plug-in, which the system's loader had no memory for.
            const auto lines = std::count(end.errors.begin(), end.errors.end(), '\n');
            EXPECT_LE(lines, 1) << number << ": " << end.errors;
            EXPECT_EQ(end.errors.find("vorlund: plug-in '") == 0, lines == 1) << number << ": " << end.errors;
            EXPECT_EQ(Load("out.wav"), whole) << number;
            inARow += step;
            continue;
        }
        inARow = 0;
        failures += step;
        EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1) << number << ": " << end.errors;
        EXPECT_EQ(List(), std::vector<std::string>{"in.wav"}) << number;
    }
    EXPECT_LT(number, kMaxRefusals);
    EXPECT_GT(failures, number / 2);
}

INSTANTIATE_TEST_SUITE_P(Rows, ProgramOutOfMemory, testing::Values(true, false),
                         [](const auto& row) { return row.param ? "Once" : "FromThenOn"; });

} // namespace
} // namespace vorlund::test
