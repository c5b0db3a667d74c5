// The command "random".
#include "cli/ProgramFolder.h"
#include "support/WavBuilder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/RandomGenerator.h>
#include <vorlund/RefPtr.h>

#include "support/LibraryScope.h"

namespace vorlund::test {
namespace {

class RandomCommand : public CProgramFolder {
protected:
    /// What the generator makes in one read.
    TBytes Expected(std::size_t size, std::uint32_t seed = 0, std::uint32_t repeat = 1) const {
        const CLibraryScope library;
        const auto generator = CreateAs<IRandomGenerator>(classid::CRandomGenerator);
        generator->SetSeed(seed)->SetRepeatCount(repeat);
        TBytes bytes(size);
        generator->Read(bytes.data(), size);
        return bytes;
    }
};

TEST_F(RandomCommand, WritesNothingButBytesToStandardOutput) {
    const std::vector<std::string> rows[] = {{"random", "5000"}, {"random", "5000", "-o", "-"}};
    for (const auto& arguments : rows) {
        const TChildEnd end = Run(arguments);
        EXPECT_TRUE(end.IsSuccess());
        EXPECT_EQ(end.errors, "");
        EXPECT_EQ(TBytes(end.output.begin(), end.output.end()), Expected(5000));
    }
    EXPECT_TRUE(List().empty());
}

TEST_F(RandomCommand, WritesAFile) {
    const TChildEnd end = Run({"random", "200001", "--seed", "4294967295", "-o", At("noise")});
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(Load("noise"), Expected(200001, 0xFFFFFFFF));
    EXPECT_EQ(List(), std::vector<std::string>{"noise"});
}

TEST_F(RandomCommand, WritesAWavFile) {
    EXPECT_TRUE(Run({"random", "1001", "--seed", "7", "-o", At("noise.WAV")}).IsSuccess());
    EXPECT_EQ(Load("noise.WAV"), [&] {
        TBytes bytes = PlainWav({.bits = 8}, Expected(1001, 7));
        // With the padding of an odd chunk, which the size of the file counts.
        bytes.push_back(0);
        ++bytes[4];
        return bytes;
    }());
}

TEST_F(RandomCommand, RunsAreWholeInAnyBlock) {
    for (const std::uint32_t repeat : {3U, 1000U, 65535U, 65536U}) {
        EXPECT_TRUE(
            Run({"random", "200001", "--repeat", std::to_string(repeat), "-o", At("runs")}).IsSuccess());
        EXPECT_EQ(Load("runs"), Expected(200001, 0, repeat)) << repeat;
    }
}

TEST_F(RandomCommand, NoBytesAreAnEmptyFile) {
    EXPECT_TRUE(Run({"random", "0", "-o", At("empty")}).IsSuccess());
    EXPECT_EQ(List(), std::vector<std::string>{"empty"});
    EXPECT_TRUE(Load("empty").empty());
}

TEST_F(RandomCommand, WrongArgumentsAreOneLine) {
    const std::string out = At("out");
    const std::vector<std::string> rows[] = {
        {"random"},
        {"random", "-o", out, "-1"},
        {"random", "-o", out, "5x"},
        {"random", "-o", out, "1.5"},
        {"random", "-o", out, "99999999999999999999"},
        {"random", "-o", out, "5", "6"},
        {"random", "-o", out, "5", "--seed", "4294967296"},
        {"random", "-o", out, "5", "--seed", "-1"},
        {"random", "-o", out, "5", "--repeat", "0"},
        {"random", "-o", out, "5", "--repeat", "65537"},
        {"random", "-o", out, "5", "--repeat", "-1"},
        {"random", "-o", out, "5", "--no-such-option"},
    };
    for (const auto& arguments : rows) ExpectRefused(arguments, 2);
    ExpectRefused({"random", "5", "-o", At("no/such/folder")}, 1);
}

} // namespace
} // namespace vorlund::test
