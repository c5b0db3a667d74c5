// The command "play", without sound hardware: what comes out, when, and what is said about files that cannot
// be played.
#include "cli/PlayCommand.h"

namespace vorlund::test {
namespace {

constexpr TWavFormat kStereo{.channels = 2, .samplesPerSec = 8000};

class Play : public PlayCommand {};

TEST_F(Play, AListHasNoGaps) {
    // A frame alone, none, and lengths that fit no block.
    const std::vector<TBytes> parts{Ramp(40004), Ramp(4, 7), {}, Ramp(123456, 31), Ramp(12, 3)};
    std::vector<std::string> files;
    for (std::size_t i = 0; i < parts.size(); ++i)
        files.push_back(MakeWav("part" + std::to_string(i) + ".wav", parts[i], kStereo));
    EXPECT_EQ(PlayIntoFile(files), Join(parts));
}

TEST_F(Play, ManyShortFilesHaveNoGaps) {
    std::vector<TBytes> parts;
    std::vector<std::string> files;
    for (unsigned int i = 0; i < 100; ++i) {
        parts.push_back(Ramp(4 * (i % 7 + 1), i));
        files.push_back(MakeWav(std::to_string(i) + ".wav", parts.back(), kStereo));
    }
    EXPECT_EQ(PlayIntoFile(files), Join(parts));
}

TEST_F(Play, TornFrameAtTheEndShiftsNothing) {
    const std::string torn = MakeWav("torn.wav", Ramp(4003), kStereo);
    const std::string whole = MakeWav("whole.wav", Ramp(400, 9), kStereo);
    EXPECT_EQ(PlayIntoFile({torn, whole}), Join({Ramp(4000), Ramp(400, 9)}));
}

TEST_F(Play, BeginsAtATime) {
    const std::string one = MakeWav("one.wav", Ramp(32000), kStereo);
    const std::string two = MakeWav("two.wav", Ramp(400, 9), kStereo);
    // A quarter of a second, of the first file alone.
    EXPECT_EQ(PlayIntoFile({one, two, "--from", "0.25"}), Join({Ramp(24000, 8000 % 256), Ramp(400, 9)}));
    EXPECT_EQ(PlayIntoFile({one, two, "--from", "0:01"}), Ramp(400, 9));
    EXPECT_EQ(PlayIntoFile({one, two, "--from", "10:00:00"}), Ramp(400, 9));
}

TEST_F(Play, PlaysTheListSeveralTimes) {
    const std::string one = MakeWav("one.wav", Ramp(3200), kStereo);
    const std::string two = MakeWav("two.wav", Ramp(400, 9), kStereo);
    const std::vector<TBytes> round{Ramp(3200), Ramp(400, 9)};
    EXPECT_EQ(PlayIntoFile({one, two, "--loop=3"}), Join({Join(round), Join(round), Join(round)}));
    // The time is that of the first round.
    EXPECT_EQ(PlayIntoFile({one, two, "--loop=2", "--from", "0.05"}),
              Join({Ramp(1600, 1600 % 256), Ramp(400, 9), Join(round)}));
}

TEST_F(Play, OtherFormatsBecomeThatOfTheFirst) {
    const std::string first = MakeWav("first.wav", Ramp(400), {.channels = 1, .samplesPerSec = 8000});
    const std::string second =
        MakeWav("second.wav", {0, 128, 255}, {.channels = 1, .samplesPerSec = 8000, .bits = 8});
    // Half of full scale on the left, mixed so that two equal channels would not be clipped.
    const std::string third =
        MakeWav("third.wav", {192, 128}, {.channels = 2, .samplesPerSec = 8000, .bits = 8});
    EXPECT_EQ(PlayIntoFile({first, second, third}), Join({Ramp(400), {0, 0x80, 0, 0, 0, 0x7F, 0, 0x20}}));
}

TEST_F(Play, AnotherRateNeedsThePlugin) {
    const std::string first = MakeWav("first.wav", Ramp(400), kStereo);
    const std::string other = MakeWav("other.wav", Ramp(400), {.channels = 2, .samplesPerSec = 11025});
    const TChildEnd end = RunPlay({first, other, first, "--device", "file:" + At("out.wav")});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.errors,
              "vorlund: Cannot play '" + other +
                  "': No resampler: the device plays at another rate; that needs the plug-in 'resample', and "
                  "'vorlund plugins' tells why it is not loaded\nvorlund: 1 of 3 files were not "
                  "played\n");
    EXPECT_EQ(GetWavData(Load("out.wav")), Join({Ramp(400), Ramp(400)}));
}

TEST_F(Play, ChangesTheVolume) {
    const std::string file = MakeWav("file.wav", {0, 0x10, 0, 0xF0, 2, 0, 0, 0x60});
    EXPECT_EQ(PlayIntoFile({file, "--volume", "0.5"}), (TBytes{0, 0x08, 0, 0xF8, 1, 0, 0, 0x30}));
    // What is beyond full scale is clipped.
    EXPECT_EQ(PlayIntoFile({file, "--volume", "2"}), (TBytes{0, 0x20, 0, 0xE0, 4, 0, 0xFF, 0x7F}));
    EXPECT_EQ(PlayIntoFile({file, "--volume", "0"}), TBytes(8));
}

TEST_F(Play, TellsWhatIsHeard) {
    const std::string one = MakeWav("one.wav", Ramp(16000), kStereo);
    const std::string two = MakeWav("two.wav", Ramp(16000), kStereo);
    const TChildEnd end = RunPlay({one, two, "--device", "file:" + At("out.wav")});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(WithoutReturns(end.output),
              "File      " + one + "\nFile      " + two + "\nPlayed    1.000 s\n");
}

TEST_F(Play, PlaysTheStandardInput) {
    const std::string file = MakeWav("file.wav", Ramp(4000), kStereo);
    const TChildEnd end =
        RunProgramAlone({.arguments = {"play", "-", "--device", "file:" + At("out.wav")}, .input = file});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(GetWavData(Load("out.wav")), Ramp(4000));
    const TChildEnd again = RunPlay({"-", "--loop", "--device", "null"});
    EXPECT_EQ(again.exitCode, 1u);
    EXPECT_EQ(again.errors, "vorlund: The standard input can be played once only; save it to a file\n");
}

TEST_F(Play, FileThatCannotBeOpenedIsToldAndTheRestPlays) {
    const std::string good = MakeWav("good.wav", Ramp(4000), kStereo);
    const std::string words = Make("words.txt", std::string("no sound in here, only words"));
    const std::string device = "file:" + At("out.wav");
    const TChildEnd end =
        RunPlay({At("missing.wav"), good, words, At("missing.wav"), good, "--device", device});
    EXPECT_EQ(end.exitCode, 1u);
    // What "decode" says.
    const std::string missing = Decode({At("missing.wav")}).errors;
    EXPECT_EQ(end.errors,
              missing + Decode({words}).errors + missing + "vorlund: 3 of 5 files were not played\n");
    EXPECT_EQ(GetWavData(Load("out.wav")), Join({Ramp(4000), Ramp(4000)}));
}

TEST_F(Play, FileAloneThatCannotBeOpenedIsOneLine) {
    const std::string words = Make("words.txt", std::string("no sound in here, only words"));
    for (const std::string& name : {At("missing.wav"), words}) {
        const TChildEnd end = RunPlay({name, "--device", "file:" + At("out.wav")});
        EXPECT_EQ(end.exitCode, 1u);
        EXPECT_EQ(end.output, "");
        EXPECT_EQ(end.errors, Decode({name}).errors);
        EXPECT_EQ(List(), std::vector<std::string>{"words.txt"});
    }
}

TEST_F(Play, EndlessListOfNothingEnds) {
    const TChildEnd end = RunPlay({At("a.wav"), At("b.wav"), "--loop", "--device", "null"});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 3) << end.errors;
}

TEST_F(Play, EndlessListOfEmptyFilesEnds) {
    const std::string empty = MakeWav("empty.wav", {}, kStereo);
    const TChildEnd end = RunPlay({empty, empty, "--loop", "--device", "null"});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_NE(end.output.find("Played    0.000 s"), std::string::npos) << end.output;
}

TEST_F(Play, EndlessListIsNotPlayedIntoAFile) {
    const std::string file = MakeWav("file.wav", Ramp(400));
    const TChildEnd end = RunPlay({file, "--loop", "--device", "file:" + At("out.wav")});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.errors, "vorlund: A list without an end does not fit into a file; use --loop=COUNT\n");
    EXPECT_EQ(List(), std::vector<std::string>{"file.wav"});
}

TEST_F(Play, DecodersApartPlayTheSame) {
    const std::string one = MakeWav("one.wav", Ramp(40004), kStereo);
    const std::string two = MakeWav("two.wav", Ramp(400, 9), kStereo);
    EXPECT_EQ(PlayIntoFile({one, two, "--isolate"}), Join({Ramp(40004), Ramp(400, 9)}));
}

TEST_F(Play, FileThatEndsEarlyPlaysAsFarAsItGoes) {
    // It declares more than it has.
    const std::string cut =
        Make("cut.wav", CWavBuilder().Format(kStereo).Declare("data", 100000, Ramp(4000)).Build());
    const std::string good = MakeWav("good.wav", Ramp(400, 5), kStereo);
    EXPECT_EQ(PlayIntoFile({cut, good}), Join({Ramp(4000), Ramp(400, 5)}));
}

TEST_F(Play, WithoutADeviceItNamesWhatPlaysWithoutOne) {
    const TChildEnd end = RunPlay({MakeWav("file.wav", Ramp(400))});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors,
              "vorlund: There is no sound device: the plug-in 'audio' is not there; '--device null' "
              "plays without one, and '--device file:OUT.wav' into a file\n");
}

TEST_F(Play, IsNotPlayedIntoItself) {
    const std::string file = MakeWav("file.wav", Ramp(400));
    const TChildEnd end = RunPlay({file, "--device", "file:" + file});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.errors,
              "vorlund: '" + file + "' would be played into itself; name another file behind 'file:'\n");
    EXPECT_EQ(GetWavData(Load("file.wav")), Ramp(400));
}

TEST_F(Play, FileThatCannotBeWrittenIsAFailure) {
    const std::string file = MakeWav("file.wav", Ramp(400));
    const TChildEnd end = RunPlay({file, "--device", "file:" + At("missing/out.wav")});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.errors.rfind("vorlund: Cannot open '" + At("missing/out.wav") + "' for writing", 0), 0u)
        << end.errors;
    EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1) << end.errors;
}

TEST_F(Play, StandardOutputThatTakesNothingDisturbsNoSound) {
    const std::string file = MakeWav("file.wav", Ramp(40000), kStereo);
    for (const TChildOutput output : {TChildOutput::Refusing, TChildOutput::Closed}) {
        const TChildEnd end = RunProgramAlone(
            {.arguments = {"play", file, "--device", "file:" + At("out.wav")}, .output = output});
        EXPECT_EQ(end.exitCode, 1u);
        EXPECT_EQ(WithoutReturns(end.errors), "vorlund: Cannot write to the standard output\n");
        EXPECT_EQ(GetWavData(Load("out.wav")), Ramp(40000));
    }
}

TEST_F(Play, NullDeviceTakesTheTimeOfTheSound) {
    // A second and a half.
    const std::string one = MakeWav("one.wav", Ramp(32000), kStereo);
    const std::string two = MakeWav("two.wav", Ramp(16000), kStereo);
    const auto begin = std::chrono::steady_clock::now();
    const TChildEnd end = RunPlay({one, two, "--device", "null"});
    const double seconds = SecondsSince(begin);
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(WithoutReturns(end.output),
              "File      " + one + "\nFile      " + two + "\nPlayed    1.500 s\n");
    EXPECT_EQ(end.errors, "");
    EXPECT_GE(seconds, 1.45);
    // Whatever the machine does beside it.
    EXPECT_LT(seconds, 20);
}

TEST_F(Play, WrongOptionsAreOneLine) {
    const std::string file = MakeWav("file.wav", Ramp(400));
    const std::vector<std::vector<std::string>> wrong{
        {},
        {file, "--from", "x"},
        {file, "--loop=x"},
        {file, "--loop=-1"},
        {file, "--volume", "17"},
        {file, "--volume", "-1"},
        {file, "--latency", "0"},
        {file, "--latency", "11"},
        {file, "--picture", "both"},
        {file, "--window", "--picture", "frog"},
        {file, "--devise", "null"},
    };
    for (const std::vector<std::string>& arguments : wrong) {
        const TChildEnd end = RunPlay(arguments);
        EXPECT_EQ(end.exitCode, 2u) << end.output;
        EXPECT_EQ(end.output, "");
        EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1) << end.errors;
    }
    EXPECT_EQ(RunPlay({file, "--devise", "null"}).errors,
              "vorlund: There is no option '--devise'; did you mean '--device'? --help tells the options\n");
}

} // namespace
} // namespace vorlund::test
