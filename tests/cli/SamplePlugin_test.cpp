// The sample plug-in, through the program: a file that the library alone cannot read.
#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace vorlund::test {
namespace {

struct TVsa {
    std::string magic = "VSA1";
    unsigned int channels = 2;
    unsigned int bits = 16;
    unsigned int reserved = 0;
    std::uint32_t rate = 8000;
    std::uint32_t frames = 100;
    TBytes samples = Ramp(400);

    std::string Build() const {
        TBytes bytes;
        AppendText(bytes, magic);
        bytes.push_back(static_cast<std::uint8_t>(channels));
        bytes.push_back(static_cast<std::uint8_t>(bits));
        Append16(bytes, reserved);
        Append32(bytes, rate);
        Append32(bytes, frames);
        bytes.insert(bytes.end(), samples.begin(), samples.end());
        return {bytes.begin(), bytes.end()};
    }
};

class SamplePlugin : public testing::Test {
protected:
    /// Decodes a file with these bytes to raw PCM in `output_`.
    TChildEnd Decode(const std::string& bytes, const std::string& program = "samplehost/vorlund") const {
        WriteFile(At("in.vsa"), bytes);
        return RunChild(program,
                        {.arguments = {"decode", At("in.vsa").string(), "-o", At("out.pcm").string()}});
    }
    fs::path At(const std::string& name) const { return folder_.GetPath() / name; }
    std::string Output() const { return ReadFile(At("out.pcm")); }

    CTemporaryFolder folder_;
};

std::string Text(const TBytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

TEST_F(SamplePlugin, FolderThatIsAFileIsAWarning) {
    WriteFile(At("in.vsa"), TVsa().Build());
    const std::string input = At("in.vsa").string();
    TChildEnd end = RunChild("samplehost/vorlund", {.arguments = {"--plugin-path", input, "decode", input}});
    std::erase(end.errors, '\r');
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(end.errors, "vorlund: warning: the plug-in path '" + input + "' is no folder\n");
}

TEST_F(SamplePlugin, ProgramWithItDecodes) {
    const TVsa vsa;
    const TChildEnd end = Decode(vsa.Build());
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(Output(), Text(vsa.samples));
    for (const char* const line : {"Channels  2", "Rate      8000 Hz", "Bits      16", "Duration  0.013 s",
                                   "Chain     vorlund::CFileInputStream > sample::CSampleDecoder"})
        EXPECT_NE(end.output.find(line), std::string::npos) << line << "\n" << end.output;
}

TEST_F(SamplePlugin, ProgramWithoutItCannot) {
    const TChildEnd end = Decode(TVsa().Build(), "vorlund");
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_FALSE(fs::exists(At("out.pcm")));
}

TEST_F(SamplePlugin, WavFilesAreDecodedAsBefore) {
    const TBytes wav = PlainWav({}, Ramp(80));
    EXPECT_TRUE(Decode(Text(wav)).IsSuccess());
    EXPECT_EQ(Output(), Text(Ramp(80)));
}

TEST_F(SamplePlugin, PlaysAsFarAsBothGo) {
    EXPECT_TRUE(Decode(TVsa{.frames = 1000000}.Build()).IsSuccess());
    EXPECT_EQ(Output(), Text(Ramp(400)));
    EXPECT_TRUE(Decode(TVsa{.frames = 10}.Build()).IsSuccess());
    EXPECT_EQ(Output(), Text(Ramp(40)));
    EXPECT_TRUE(Decode(TVsa{.frames = 0xFFFFFFFF, .samples = {}}.Build()).IsSuccess());
    EXPECT_EQ(Output(), "");
    EXPECT_TRUE(Decode(TVsa{.channels = 8, .bits = 8, .frames = 2}.Build()).IsSuccess());
    EXPECT_EQ(Output(), Text(Ramp(16)));
}

TEST_F(SamplePlugin, RefusesWhatIsNotItsOwn) {
    const struct {
        std::string bytes;
        const char* reason;
    } rows[] = {
        {TVsa{.magic = "VSA2"}.Build(), "no loaded decoder knows this kind of file"},
        {TVsa().Build().substr(0, 15), "no loaded decoder knows this kind of file"},
        {TVsa{.channels = 0}.Build(), "VSA: Invalid VSA header (channels 0, "},
        {TVsa{.channels = 9}.Build(), "VSA: Invalid VSA header (channels 9, "},
        {TVsa{.bits = 24}.Build(), "bits 24, reserved 0)"},
        {TVsa{.reserved = 256}.Build(), "reserved 256)"},
    };
    for (const auto& row : rows) {
        const TChildEnd end = Decode(row.bytes);
        EXPECT_EQ(end.exitCode, 1u);
        EXPECT_NE(end.errors.find(row.reason), std::string::npos) << end.errors;
        EXPECT_FALSE(fs::exists(At("out.pcm")));
    }
}

} // namespace
} // namespace vorlund::test
