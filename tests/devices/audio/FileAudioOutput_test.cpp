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

TEST_F(FileAudioOutput, PausedItWaitsAndWritesNoSilence) {
    const auto output = Create();
    output->OpenOutput(kSixteenBits, 0.1);
    const TBytes sound = MakeSound(kSixteenBits, 100);
    output->SetPaused(true);
    output->Write(sound.data(), sound.size());
    EXPECT_FALSE(output->Drain());
    EXPECT_EQ(output->GetPosition(), 0u);
    output->SetPaused(false);
    EXPECT_TRUE(output->Drain());
    output->Write(sound.data(), sound.size());
    EXPECT_TRUE(output->Drain());
    output->Close();
    EXPECT_EQ(GetSound(), Joined(sound, sound));
}

TEST_F(FileAudioOutput, CloseDropsWhatIsNotWritten) {
    const auto output = Create();
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    output->SetPaused(true);
    const TBytes sound = MakeSound(kSixteenBits, 100);
    output->Write(sound.data(), sound.size());
    output->Close();
    EXPECT_TRUE(GetSound().empty());
    // Opening empties the file, and closes it before.
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    output->Write(sound.data(), 40);
    EXPECT_TRUE(output->Drain());
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    output->Write(sound.data(), sound.size());
    EXPECT_TRUE(output->Drain());
    output->Close();
    EXPECT_EQ(GetSound(), sound);
}

TEST_F(FileAudioOutput, AFileThatCannotBeOpened) {
    ExpectRaises<CNullPtrException>({VRL_L("vorlund::CreateFileAudioOutput"),
                                     VRL_L("src/vorlund/devices/audio/FilePort"), 1, VRL_L("path is NULL")},
                                    [] { CreateFileAudioOutput(nullptr); });
    const auto output =
        CRefPtr<IAudioOutput>::Adopt(CreateFileAudioOutput(ToVorlund(At("missing") / "sound.wav").c_str()));
    EXPECT_THROW(output->Open(), CFileAccessException);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
}

TEST_F(FileAudioOutput, TwoWriteAtOnce) {
    const auto one = Create();
    const auto other = CRefPtr<IAudioOutput>::Adopt(CreateFileAudioOutput(ToVorlund(At("b.wav")).c_str()));
    const TBytes sound = MakeSound(kSixteenBits, 50000);
    const TBytes second = MakeSound(kSixteenBits, 50000, 2);
    one->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    other->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    for (std::size_t at = 0; at < sound.size(); at += 2000) {
        one->Write(sound.data() + at, 2000);
        other->Write(second.data() + at, 2000);
    }
    EXPECT_TRUE(one->Drain());
    EXPECT_TRUE(other->Drain());
    one->Close();
    other->Close();
    EXPECT_EQ(GetSound(), sound);
    const std::string bytes = ReadFile(At("b.wav"));
    EXPECT_EQ(Body({bytes.begin(), bytes.end()}, "data"), second);
}

} // namespace
} // namespace vorlund::test
