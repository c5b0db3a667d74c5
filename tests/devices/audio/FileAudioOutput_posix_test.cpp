// The output that writes a file, when the system takes no more.
#include "devices/audio/AudioTest.h"
#include "support/FileSizeLimit_posix.h"

namespace vorlund::test {
namespace {

constexpr TFailure kWriteLost{VRL_L("vorlund::CAudioOutput::Write"),
                              VRL_L("src/vorlund/devices/audio/AudioOutput"), 9, VRL_L("Device is lost")};

class FileAudioOutputLimit : public CFileTest {};

TEST_F(FileAudioOutputLimit, IsLostAndSaysWhyWhenItIsClosed) {
    const auto output =
        CRefPtr<IAudioOutput>::Adopt(CreateFileAudioOutput(ToVorlund(At("sound.wav")).c_str()));
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 480000);
    const CFileSizeLimit limit(200000);
    ExpectRaises<CFailedException>(kWriteLost, [&] { output->Write(sound.data(), sound.size()); });
    EXPECT_EQ(output->GetState(), AUDIO_STATE_LOST);
    EXPECT_THROW(output->Close(), CIOException);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
    output->Close();
}

} // namespace
} // namespace vorlund::test
