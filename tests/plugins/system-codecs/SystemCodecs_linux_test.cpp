// Decoding by FFmpeg, and programs in its place.
#include "plugins/SoundPluginTest.h"
#include "support/Failures.h"

#include <vorlund/DecodeReport.h>

#include <chrono>
#include <cstdlib>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("plugins/system-codecs/SystemSound_linux");
constexpr const wchar* kRead = VRL_L("ISystemSound::Read");
constexpr TFailure kFailed{kRead, kFile, 4, VRL_L("FFmpeg failed")};

using SystemCodecs = SoundPluginTest;

TEST_F(SystemCodecs, EverySampleAndTheLength) {
    for (const TSoundRow& row : LoadRows()) {
        SCOPED_TRACE(row.name);
        const TBytes expected = LoadSound(row.name + ".pcm");
        const auto decoded = DecodeFile(row.name);
        const auto& format = static_cast<const TDataFormat_AudioPcm&>(decoded->GetFormat());
        EXPECT_EQ(format.sampleFormat, row.format.sampleFormat);
        EXPECT_EQ(format.channels, row.format.channels);
        EXPECT_EQ(format.samplesPerSec, row.format.samplesPerSec);
        EXPECT_TRUE(ReadAll(*decoded) == expected);
        EXPECT_EQ(decoded->GetLength(), static_cast<std::int64_t>(expected.size()));
        EXPECT_TRUE(decoded->Eof());
    }
}

TEST_F(SystemCodecs, LengthBeforeReading) {
    const auto decoded = DecodeFile("aac.m4a");
    const TBytes expected = LoadSound("aac.m4a.pcm");
    EXPECT_EQ(decoded->GetLength(), static_cast<std::int64_t>(expected.size()));
    EXPECT_FALSE(decoded->Eof());
    EXPECT_TRUE(ReadAll(*decoded, 777) == expected);
}

TEST_F(SystemCodecs, EveryPositionHasTheSameBits) {
    for (const char* const name : {"aac.m4a", "alac24.m4a"}) {
        SCOPED_TRACE(name);
        const TBytes expected = LoadSound(std::string(name) + ".pcm");
        const auto decoded = DecodeFile(name);
        TBytes part(3001);
        std::uint32_t state = 7;
        for (int i = 0; i < 15; ++i) {
            state = state * 1664525 + 1013904223;
            const std::size_t at = (state >> 8) % expected.size();
            decoded->Seek(static_cast<std::int64_t>(at));
            ASSERT_EQ(decoded->Tell(), static_cast<std::int64_t>(at));
            const std::size_t count = std::min(part.size(), expected.size() - at);
            ASSERT_EQ(decoded->Read(part.data(), part.size()), count);
            ASSERT_EQ(std::memcmp(part.data(), expected.data() + at, count), 0) << at;
        }
        decoded->Seek(INT64_MAX);
        EXPECT_EQ(decoded->Tell(), static_cast<std::int64_t>(expected.size()));
        EXPECT_EQ(decoded->Read(part.data(), part.size()), 0u);
        decoded->Seek(10);
        decoded->Skip(20);
        EXPECT_EQ(decoded->Tell(), 30);
        EXPECT_THROW(decoded->Seek(-1), CIOException);
    }
}

TEST_F(SystemCodecs, DamagedFilesEnd) {
    for (const char* const name : {"aac.m4a", "alac16.m4a"}) {
        SCOPED_TRACE(name);
        const TBytes bytes = LoadSound(name);
        // Each takes processes: a few places of all parts of the file.
        for (std::size_t size = 0; size < bytes.size(); size += bytes.size() / 5 + 97) {
            TBytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
            TBytes flipped = bytes;
            flipped[size] ^= 0xFF;
            for (const TBytes& damaged : {cut, flipped}) {
                try {
                    EXPECT_LE(ReadAll(*DecodeBytes(damaged)).size(), 16 * bytes.size());
                } catch (const CDataFormatException&) {
                } catch (const CIOException&) {
                }
            }
        }
    }
}

/// Programs of the test's own in the place of FFmpeg's.
class SystemCodecsPrograms : public SoundPluginTest {
protected:
    SystemCodecsPrograms() : path_(std::getenv("PATH")) { SetPath(folder_.GetPath().string() + ":."); }
    ~SystemCodecsPrograms() override { setenv("PATH", path_.c_str(), 1); }

    static void SetPath(const std::string& path) { setenv("PATH", path.c_str(), 1); }
    void Add(const std::string& name, const std::string& script) const {
        const fs::path file = folder_.GetPath() / name;
        WriteFile(file, "#!/bin/sh\n" + script + "\n");
        fs::permissions(file, fs::perms::owner_all);
    }
    void AddGoodProbe() const {
        Add("ffprobe", "echo codec_name=aac; echo sample_fmt=fltp; echo sample_rate=8000; echo channels=1");
    }
    CRefPtr<IInputStream> DecodeHead() {
        const std::string head = std::string("\0\0\0\x18", 4) + "ftypM4A mp42isom";
        return DecodeBytes({head.begin(), head.end()});
    }
    /// Why it is refused.
    static std::string Refusal() {
        const std::string head = std::string("\0\0\0\x18", 4) + "ftypM4A mp42isom";
        const auto source = Make<CMemoryInputStream>();
        source->bytes.assign(head.begin(), head.end());
        CDecodeReport report;
        try {
            CRefPtr<IInputStream>::Adopt(
                CInputStreamSelector(source.Get())
                    .DecodeStream(TDataFormat_AudioPcm::FormatId, {.report = &report}));
        } catch (const CDataFormatException&) {
        }
        return Narrow(report.Explain().GetBuffer());
    }

    const std::string path_;
    CTemporaryFolder folder_;
};

TEST_F(SystemCodecsPrograms, WithoutFfmpegTheReportSaysWhatToInstall) {
    EXPECT_EQ(Refusal(), "M4A: It is decoded by FFmpeg, which is not installed");
    AddGoodProbe();
    EXPECT_EQ(Refusal(), "M4A: It is decoded by FFmpeg, which is not installed");
}

TEST_F(SystemCodecsPrograms, OnesOfTheWorkingFolderAreNotRun) {
    const fs::path before = fs::current_path();
    AddGoodProbe();
    Add("ffmpeg", "printf abcd");
    fs::current_path(folder_.GetPath());
    SetPath(":.:relative");
    EXPECT_EQ(Refusal(), "M4A: It is decoded by FFmpeg, which is not installed");
    fs::current_path(before);
}

TEST_F(SystemCodecsPrograms, AnswersThatAreNone) {
    Add("ffmpeg", "printf abcd");
    for (const char* const answer :
         {"true", "echo sample_rate=8000; echo channels=1", "echo sample_fmt=fltp; echo channels=1",
          "echo sample_fmt=fltp; echo sample_rate=-1; echo channels=1",
          "echo sample_fmt=fltp; echo sample_rate=8000; echo channels=65",
          "echo sample_fmt=fltp; echo sample_rate=99999999999; echo channels=1", "exit 1",
          "yes xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"}) {
        SCOPED_TRACE(answer);
        Add("ffprobe", answer);
        EXPECT_EQ(Refusal(), "M4A: FFmpeg finds no sound in it");
    }
    Add("ffprobe", "echo codec_name=odd; echo sample_rate=8000");
    EXPECT_EQ(Refusal(), "M4A: FFmpeg finds no sound in it (codec \"odd\")");
}

TEST_F(SystemCodecsPrograms, WhatItWritesIsTheSound) {
    AddGoodProbe();
    // The file is its third descriptor.
    Add("ffmpeg", "exec /bin/cat /dev/fd/3");
    EXPECT_EQ(ReadAll(*DecodeHead()).size(), 20u);
}

TEST_F(SystemCodecsPrograms, FailureIsNoEnd) {
    AddGoodProbe();
    Add("ffmpeg", "printf abcd; exit 3");
    const auto decoded = DecodeHead();
    char bytes[8];
    ExpectRaises<CIOException>(kFailed, [&] { decoded->Read(bytes, sizeof(bytes)); });
    ExpectRaises<CIOException>(kFailed, [&] { decoded->GetLength(); });
}

TEST_F(SystemCodecsPrograms, OneThatHangsIsEnded) {
    AddGoodProbe();
    Add("ffmpeg", "printf abcd; exec /bin/sleep 1000");
    const auto began = std::chrono::steady_clock::now();
    {
        const auto decoded = DecodeHead();
        char bytes[4];
        EXPECT_EQ(decoded->Read(bytes, sizeof(bytes)), 4u);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(8));
}

} // namespace
} // namespace vorlund::test
