// The plug-in through the program: a WAV file of the format that is announced.
#include "plugins/SoundPluginTest.h"

#include <vorlund/DecoderSupport.h>

namespace vorlund::test {
namespace {

class SndfileProgram : public testing::Test {
protected:
    TChildEnd Decode(const std::string& input, const char* option = "decode") const {
        std::vector<std::string> arguments{option, input, "-o", Output().string()};
        if (arguments[0] != "decode") arguments.insert(arguments.begin() + 1, "decode");
        return RunChild("vorlund", {.arguments = arguments});
    }
    fs::path Output() const { return folder_.GetPath() / "out.wav"; }

    CTemporaryFolder folder_;
};

TEST_F(SndfileProgram, WritesAWavFileOfTheAnnouncedFormat) {
    const struct {
        const char* name;
        const char* bits;
        std::uint16_t tag;
        std::size_t headSize;
    } rows[] = {{"16.flac", "Bits      16\n", 1, 44},
                {"24.aiff", "Bits      32\n", 1, 44},
                {"float.au", "Bits      32 float\n", 3, 58}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TChildEnd end = Decode(SoundPath(row.name).string());
        ASSERT_TRUE(end.IsSuccess()) << end.errors;
        std::erase(end.output, '\r');
        EXPECT_NE(end.output.find(row.bits), std::string::npos) << end.output;
        EXPECT_NE(end.output.find("CFileInputStream > sndfile::CSndfileDecoder\n"), std::string::npos)
            << end.output;
        const std::string wav = ReadFile(Output());
        ASSERT_GT(wav.size(), row.headSize);
        EXPECT_EQ(LoadLittleEndian16(reinterpret_cast<const std::uint8_t*>(wav.data()) + 20), row.tag);
        EXPECT_TRUE(wav.substr(row.headSize) == ReadFile(SoundPath(std::string(row.name) + ".pcm")));
    }
}

TEST_F(SndfileProgram, DecodesApart) {
    TChildEnd end = Decode(SoundPath("16.flac").string(), "--isolate");
    ASSERT_TRUE(end.IsSuccess()) << end.errors;
    std::erase(end.output, '\r');
    EXPECT_NE(end.output.find("CFileInputStream > sndfile::CSndfileDecoder (isolated)\n"), std::string::npos)
        << end.output;
    EXPECT_TRUE(ReadFile(Output()).substr(44) == ReadFile(SoundPath("16.flac.pcm")));
    // Without plug-ins here, and there.
    end = RunChild("vorlund",
                   {.arguments = {"--isolate", "--no-plugins", "decode", SoundPath("16.flac").string()}});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_NE(end.errors.find("FLAC: no loaded decoder reads it; try the plug-in 'sndfile'"),
              std::string::npos)
        << end.errors;
}

TEST_F(SndfileProgram, SaysWhenAFileIsOfNoKnownKind) {
    const std::string input = (folder_.GetPath() / "text.flac").string();
    WriteFile(input, "This is no sound.");
    const TChildEnd end = Decode(input);
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_NE(end.errors.find("no loaded decoder knows this kind of file"), std::string::npos) << end.errors;
    EXPECT_FALSE(fs::exists(Output()));
}

} // namespace
} // namespace vorlund::test
