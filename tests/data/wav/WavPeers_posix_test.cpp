// What other programs read in the files: the length, and each sample.
#include "data/file/TemporaryFolder.h"
#include "data/wav/SampleFiles.h"
#include "data/wav/SparseStream.h"

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>

#include <cstdio>
#include <memory>

namespace vorlund::test {
namespace {

class WavPeers : public CFileTest {
protected:
    /// What a command writes to its standard output.
    static std::string Ask(const std::string& command) {
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen((command + " 2>&1").c_str(), "r"),
                                                                   &pclose);
        std::string text;
        char block[4096];
        while (const std::size_t count = std::fread(block, 1, sizeof block, pipe.get()))
            text.append(block, count);
        return text;
    }

    static std::string Quote(const fs::path& path) { return " '" + path.string() + "' "; }

    /// The number of frames by each of the three.
    void ExpectFrames(const fs::path& path, std::uint64_t frames, bool isForSox = true) const {
        SCOPED_TRACE(path.filename());
        if (isForSox) {
            EXPECT_EQ(Ask(VORLUND_SOXI " -V1 -s" + Quote(path)), std::to_string(frames) + "\n");
        }
        const std::string stream = Ask(
            VORLUND_FFPROBE " -v error -show_entries stream=duration_ts -of default=nw=1:nk=1" + Quote(path));
        EXPECT_EQ(stream, (frames == 0 ? "N/A" : std::to_string(frames)) + "\n");
        const std::string info = Ask(VORLUND_SNDFILE_INFO + Quote(path));
        EXPECT_NE(info.find("\nFrames      : " + std::to_string(frames) + "\n"), std::string::npos) << info;
    }
};

TEST_F(WavPeers, ReadEverySample) {
    for (const TSampleFile& file : MakeSampleFiles()) {
        SCOPED_TRACE(file.name);
        const fs::path path = Put(file.name + ".wav", std::string(file.bytes.begin(), file.bytes.end()));
        ExpectFrames(path, file.frames);
        if (file.frames == 0) continue;
        const std::string expected(file.wide.begin(), file.wide.end());
        EXPECT_EQ(Ask(VORLUND_SOX " -V1" + Quote(path) + "-t raw -e signed -b 32 -L -"), expected);
        EXPECT_EQ(Ask(VORLUND_FFMPEG " -v error -i" + Quote(path) + "-c:a pcm_s32le -f s32le -"), expected);
        const fs::path raw = At(file.name + ".raw");
        // That program makes integers of floats by another scale.
        const bool isFloat = file.format.sampleFormat == WAV_SAMPLE_FLOAT;
        Ask(VORLUND_SNDFILE_CONVERT + std::string(isFloat ? " -float32" : " -pcm32") + Quote(path) +
            Quote(raw));
        EXPECT_EQ(ReadFile(raw), isFloat ? std::string(file.sound.begin(), file.sound.end()) : expected);
        EXPECT_EQ(Ask(VORLUND_FFPROBE " -v error -show_entries format_tags=title,time_reference -of "
                                      "default=nw=1:nk=1" +
                      Quote(path)),
                  file.frames == 37 ? "78187493530\nA title, odd\n" : "");
    }
}

TEST_F(WavPeers, ReadLargeFiles) {
    constexpr std::uint64_t k2G = std::uint64_t{1} << 31;
    const TBytes block(std::size_t{64} << 20);
    for (const std::uint64_t size : {k2G - 80, k2G, 2 * k2G - 80, 2 * k2G, 2 * k2G + 2}) {
        const fs::path path = At("large.wav");
        const auto file = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
        file->Open(ToVorlund(path).c_str(), false);
        const auto stream = Make<CHoleyStream>();
        stream->target = CRefPtr<IOutputStream>::Share(file.Get());
        CWavWriter writer(stream.Get(), {WAV_SAMPLE_16BIT, 1, 48000});
        while (writer.GetSize() < size)
            writer.Write(block.data(), std::min<std::uint64_t>(size - writer.GetSize(), block.size()));
        writer.Close();
        const bool isRf64 = size + 72 >= 0xFFFFFFFF;
        char head[4] = {};
        std::ifstream(path, std::ios::binary).read(head, sizeof head);
        EXPECT_EQ(std::string(head, sizeof head), isRf64 ? "RF64" : "RIFF");
        ExpectFrames(path, size / 2, !isRf64);
    }
}

} // namespace
} // namespace vorlund::test
