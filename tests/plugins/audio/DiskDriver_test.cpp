// SDL's driver that writes what is played to a file, and reads what is recorded from one.
#include "plugins/audio/AudioPluginTest.h"

namespace vorlund::test {
namespace {

constexpr TDataFormat_AudioPcm kFileFormat{SAMPLE_FORMAT_FLOAT, 2, 48000};

class DiskDriver : public CAudioPluginTest {
protected:
    const CTemporaryFolder folder_;
    const fs::path file_ = folder_.GetPath() / "played.raw";
    const CEnvironment environment_{{{"SDL_AUDIODRIVER", "disk"}, {"SDL_DISKAUDIOFILE", file_.string()}}};
};

TEST_F(DiskDriver, WritesWhatIsPlayedInEachFormat) {
    for (const std::uint32_t sampleFormat :
         {SAMPLE_FORMAT_8BIT, SAMPLE_FORMAT_16BIT, SAMPLE_FORMAT_32BIT, SAMPLE_FORMAT_FLOAT}) {
        for (const std::uint32_t channels : {1u, 2u, 6u}) {
            SCOPED_TRACE(testing::Message() << sampleFormat << " " << channels);
            const TDataFormat_AudioPcm format{sampleFormat, channels, 44100};
            const TBytes sound = MakeNoise(format, 10000, sampleFormat * 10 + channels);
            const auto output = MakeOutput();
            // Everything is queued before the file gets it, so that no gap is in it.
            output->OpenOutput(format, 0.5);
            output->SetPaused(true);
            EXPECT_EQ(output->GetDeviceFormat().sampleFormat, sampleFormat);
            EXPECT_EQ(output->Write(sound.data(), sound.size()), sound.size());
            output->SetPaused(false);
            EXPECT_TRUE(output->Drain());
            EXPECT_EQ(output->GetPosition(), 10000u);
            output->Close();
            const std::string bytes = ReadFile(file_);
            EXPECT_TRUE(FindSound({bytes.begin(), bytes.end()}, sound, format.GetBlockSize()));
        }
    }
}

TEST_F(DiskDriver, ReadsWhatIsRecorded) {
    const TBytes sound = MakeNoise(kFileFormat, 48000);
    const fs::path heard = folder_.GetPath() / "heard.raw";
    WriteFile(heard, {reinterpret_cast<const char*>(sound.data()), sound.size()});
    const CEnvironment recorded({{"SDL_DISKAUDIOFILEIN", heard.string()}});
    const auto input = MakeInput();
    input->OpenInput(kFileFormat, kDefaultAudioLatency);
    const auto stream = CRefPtr<IInputStream>::Adopt(input->GetStream());
    TBytes bytes(sound.size());
    EXPECT_EQ(stream->Read(bytes.data(), bytes.size()), bytes.size());
    EXPECT_TRUE(bytes == sound);
    input->Close();
}

TEST_F(DiskDriver, SaysThatAFileCannotBeWritten) {
    const CEnvironment nowhere({{"SDL_DISKAUDIOFILE", (folder_.GetPath() / "none" / "a.raw").string()}});
    const auto output = MakeOutput();
    EXPECT_THROW(output->OpenOutput(kFileFormat, kDefaultAudioLatency), CFailedException);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
}

} // namespace
} // namespace vorlund::test
