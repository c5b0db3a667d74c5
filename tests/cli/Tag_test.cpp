// The command "tag".
#include "cli/DecodeCommand.h"

namespace vorlund::test {
namespace {

class TagCommand : public DecodeCommand {
protected:
    const std::string file_ = Make("file.wav", PlainWav({.channels = 2}, Ramp(400)));

    static std::string Output(const TChildEnd& end) { return WithoutReturns(end.output); }
};

TEST_F(TagCommand, ShowsWhatWasSet) {
    EXPECT_EQ(Output(Run({"tag", file_})), "");
    TChildEnd end = Run({"tag", file_, "--set", "INAM=Title", "--set", "IART=A=B", "--set",
                         "description=Words", "--set", "time-reference=48000"});
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(Output(end), "INAM      Title\nIART      A=B\ndescription Words\ntime-reference 48000\n");
    EXPECT_EQ(end.errors, "");
    end = Run({"tag", file_, "--set", "INAM=Other", "--remove", "IART", "--remove", "bext"});
    EXPECT_EQ(Output(end), "INAM      Other\n");
    EXPECT_EQ(Output(Run({"tag", file_})), "INAM      Other\n");
    // The sound is where it was.
    EXPECT_TRUE(Decode({file_, "-o", At("out.pcm")}).IsSuccess());
    EXPECT_EQ(Load("out.pcm"), Ramp(400));
    const TBytes bytes = Load("file.wav");
    EXPECT_EQ(TBytes(bytes.begin() + 44, bytes.begin() + 444), Ramp(400));
}

TEST_F(TagCommand, ControlCharactersStayOffTheTerminal) {
    TBytes list;
    AppendText(list, "INFOINAM");
    Append32(list, 8);
    AppendText(list, "a\x1B[31mb\n");
    Make("evil.wav", CWavBuilder().Format({}).Chunk("LIST", list).Chunk("data", Ramp(4)).Build());
    EXPECT_EQ(Output(Run({"tag", At("evil.wav")})), "INAM      a [31mb \n");
}

TEST_F(TagCommand, WrongKeysAreUsage) {
    for (const std::string text : {"x=y", "INAM", "inam=x", "=x", "time-reference=x", "TOOLONG=x"}) {
        const TChildEnd end = Run({"tag", file_, "--set", text});
        EXPECT_EQ(end.exitCode, 2u) << text;
        EXPECT_EQ(end.output, "");
    }
    EXPECT_EQ(Load("file.wav"), PlainWav({.channels = 2}, Ramp(400)));
}

TEST_F(TagCommand, FilesThatCannotBeTagged) {
    const std::string text = Make("text.wav", std::string("only words, no sound"));
    EXPECT_EQ(Run({"tag", text}).errors, "vorlund: Cannot tag '" + text + "': Invalid header\n");
    const std::string wrong =
        Make("wrong.wav", CWavBuilder().Format({}).RiffSize(0).Chunk("data", Ramp(40)).Build());
    const TBytes before = Load("wrong.wav");
    const TChildEnd end = Run({"tag", wrong, "--set", "INAM=x"});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.errors, "vorlund: Cannot tag '" + wrong +
                              "': The sizes of its chunks are wrong; mend them with 'vorlund repair'\n");
    EXPECT_EQ(Load("wrong.wav"), before);
    EXPECT_EQ(Run({"tag", At("missing.wav")}).errors,
              "vorlund: Cannot open '" + At("missing.wav") +
                  "' for reading: there is no such file; check the name\n");
}

} // namespace
} // namespace vorlund::test
