// The program when a device or a disk is full.
#include "cli/DecodeCommand.h"
#include "support/FileSizeLimit_posix.h"

namespace vorlund::test {
namespace {

class WriteFailuresPosix : public DecodeCommand {
protected:
    /// One line and exit code 1.
    static void ExpectCannotWrite(const TChildEnd& end, const std::string& name) {
        EXPECT_EQ(end.exitCode, 1u) << name;
        EXPECT_EQ(end.signal, 0) << name;
        EXPECT_EQ(end.output, "") << name;
        EXPECT_EQ(end.errors, "vorlund: Cannot write '" + name + "'\n");
    }

    const std::string input_ = Make("in.wav", PlainWav({.channels = 2}, Ramp(300000)));
    const std::string small_ = Make("small.wav", PlainWav({.channels = 2}, Ramp(100)));
};

TEST_F(WriteFailuresPosix, FullDeviceTakesNoCommandsBytes) {
    // Names that each command takes, on the device.
    for (const char* const name : {"full", "full.wav", "full.y4m"})
        std::filesystem::create_symlink("/dev/full", At(name));
    for (const std::string& input : {input_, small_}) {
        for (const char* const name : {"full", "full.wav"})
            ExpectCannotWrite(Decode({input, "-o", At(name)}), At(name));
    }
    for (const char* const size : {"1", "100", "1000000"})
        ExpectCannotWrite(Run({"random", size, "-o", At("full")}), At("full"));
    ExpectCannotWrite(Run({"plasma", "--size", "4x4", "--frames", "1", "-o", At("full.y4m")}),
                      At("full.y4m"));
    EXPECT_EQ(List(), (std::vector<std::string>{"full", "full.wav", "full.y4m", "in.wav", "small.wav"}));
}

TEST_F(WriteFailuresPosix, FullDiskLeavesNoFileAndSparesTheOneThatWasThere) {
    Make("kept.wav", std::string("what was there before"));
    const std::vector<std::string> before = List();
    struct {
        rlim_t limit;
        std::vector<std::string> arguments;
    } const rows[] = {
        {100000, {"decode", input_, "-o"}},
        // Refused only when what was buffered is written out at the end.
        {60, {"decode", small_, "-o"}},
        {10, {"decode", small_, "-o"}},
        {100000, {"random", "1000000", "-o"}},
        {60, {"random", "100", "-o"}},
        {0, {"random", "1", "-o"}},
        {1000, {"plasma", "--size", "64x64", "--frames", "2", "-o"}},
        {5, {"plasma", "--size", "1x1", "--frames", "1", "-o"}},
    };
    for (const auto& row : rows) {
        const bool isVideo = row.arguments.front() == "plasma";
        for (const char* const name : {isVideo ? "new.y4m" : "new.wav", isVideo ? "new.png" : "kept.wav"}) {
            std::vector<std::string> arguments = row.arguments;
            arguments.push_back(At(name));
            TChildEnd end;
            {
                const CFileSizeLimit limit(row.limit);
                end = Run(arguments);
            }
            ExpectCannotWrite(end, name == std::string("new.png") ? At("new-0001.png") : At(name));
            EXPECT_EQ(List(), before) << name;
        }
    }
    EXPECT_EQ(std::filesystem::file_size(At("kept.wav")), 21u);
}

} // namespace
} // namespace vorlund::test
