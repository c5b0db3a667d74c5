// The program when its input cannot be read to the end: no short file, no success.
#include "cli/DecodeCommand.h"
#include "cli/FailingReads.h"

namespace vorlund::test {
namespace {

class ReadFailures : public DecodeCommand {
protected:
    /// Runs "decode" over the input and expects exit code 1, one line with `reason` in it, and no output.
    void ExpectFailure(std::vector<std::string> arguments, std::int64_t limit, bool isError,
                       const std::string& reason) const {
        const std::vector<std::string> before = List();
        const std::string all = Join(arguments) + " from " + std::to_string(limit);
        arguments.insert(arguments.begin(), {"decode", input_});
        const TChildEnd end = RunWithFailingReads(arguments, limit, isError);
        EXPECT_EQ(end.exitCode, 1u) << all;
        EXPECT_EQ(end.errors.rfind("vorlund: Cannot read '" + input_ + "': " + reason, 0), 0u)
            << all << ": " << end.errors;
        EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1) << all;
        EXPECT_EQ(List(), before) << all;
    }

    static std::string Join(const std::vector<std::string>& words) {
        std::string text;
        for (const std::string& word : words) text += word + ' ';
        return text;
    }

    const std::vector<std::vector<std::string>> outputs_ = {
        {},
        {"-o", At("out.wav")},
        {"-o", At("out.pcm")},
        {"-o", "-"},
        {"--format", "f32", "-o", At("out.wav")},
        {"--format", "f32", "--channels", "1", "-o", At("out.wav")},
    };
    const TBytes wav_ = PlainWav({.channels = 2}, Ramp(300000));
    const std::string input_ = Make(kUnreadableName, wav_);
};

TEST_F(ReadFailures, ErrorInTheMiddleIsAFailure) {
    for (const auto& arguments : outputs_) ExpectFailure(arguments, 100000, true, "");
    // The header, the first byte of the data, the last one.
    for (const std::int64_t limit : {0, 4, 20, 44, 300043})
        ExpectFailure({"-o", At("out.wav")}, limit, true, "");
}

TEST_F(ReadFailures, FileThatEndsBeforeItsLengthIsAFailure) {
    for (const auto& arguments : outputs_) ExpectFailure(arguments, 100000, false, "It has become shorter\n");
    ExpectFailure({"-o", At("out.wav")}, 300043, false, "It has become shorter\n");
}

TEST_F(ReadFailures, FileThatWasThereIsSpared) {
    const std::string kept = Make("kept.wav", std::string("what was there before"));
    ExpectFailure({"-o", kept}, 100000, true, "");
    ExpectFailure({"-o", kept}, 100000, false, "");
    EXPECT_EQ(Load("kept.wav").size(), 21u);
}

TEST_F(ReadFailures, WhatIsReadToItsEndIsNone) {
    const TChildEnd end = RunWithFailingReads({"decode", input_, "-o", At("out.wav")}, 300045, true);
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(Load("out.wav"), wav_);
}

TEST_F(ReadFailures, DataThatAreWholeAreEnough) {
    // The data end in the middle of a frame, and of the chunk behind them only the head is left.
    const TBytes torn =
        CWavBuilder().Format({.channels = 2}).Chunk("data", Ramp(4098)).Chunk("LIST", Ramp(100)).Build();
    Make(kUnreadableName, torn);
    const auto limit = static_cast<std::int64_t>(torn.size()) - 100;
    for (const char* const channels : {"1", "2"}) {
        const TChildEnd end = RunWithFailingReads(
            {"decode", input_, "--channels", channels, "-o", At("out.wav")}, limit, false);
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
    }
}

} // namespace
} // namespace vorlund::test
