// The output that writes a file.
#include "devices/audio/AudioTest.h"

#include <vorlund/Event.h>

namespace vorlund::test {
namespace {

class FileAudioOutput : public CFileTest {
protected:
    CRefPtr<IAudioOutput> Create() const {
        return CRefPtr<IAudioOutput>::Adopt(CreateFileAudioOutput(ToVorlund(path_).c_str()));
    }
    TBytes GetSound() const {
        const std::string bytes = ReadFile(path_);
        return Body({bytes.begin(), bytes.end()}, "data");
    }

    const fs::path path_ = At("sound.wav");
};

TEST_F(FileAudioOutput, WritesWhatWasWritten) {
    const auto output = Create();
    for (const TDataFormat_AudioPcm& format : kEachFormat) {
        const TBytes sound = MakeSound(format, 100000);
        output->OpenOutput(format, kDefaultAudioLatency);
        EXPECT_EQ(output->Write(sound.data(), sound.size()), sound.size());
        EXPECT_TRUE(output->Drain());
        EXPECT_EQ(output->GetPosition(), 100000u);
        EXPECT_EQ(output->GetDelay(), 0u);
        EXPECT_EQ(output->GetXruns(), 0u);
        output->Close();
        EXPECT_EQ(GetSound(), sound);
    }
}

TEST_F(FileAudioOutput, PlaysStreamsBehindOneAnother) {
    const auto output = Create();
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 1000);
    EXPECT_TRUE(output->GetIdleEvent().GetState());
    TBytes all = sound;
    output->Write(sound.data(), sound.size());
    CReferenceList<IInputStream> streams;
    for (std::uint32_t seed = 2; seed < 12; ++seed) {
        const TBytes more = MakeSound(kSixteenBits, seed * 777, seed);
        streams.Adopt(MakeStream(kSixteenBits, more).Detach());
        output->Play(streams[streams.GetCount() - 1]);
        all = Joined(all, more);
    }
    EXPECT_TRUE(output->Drain());
    EXPECT_TRUE(output->GetIdleEvent().GetState());
    EXPECT_EQ(output->GetPlayingStreams(), 0u);
    EXPECT_EQ(output->GetPosition(), all.size() / 4);
    output->Close();
    EXPECT_EQ(GetSound(), all);
}

} // namespace
} // namespace vorlund::test
