// The output that writes a file, when the system takes no more.
#include "devices/audio/AudioTest.h"

#include <csignal>

#include <sys/resource.h>

namespace vorlund::test {
namespace {

constexpr TFailure kWriteLost{VRL_L("vorlund::CAudioOutput::Write"),
                              VRL_L("src/vorlund/devices/audio/AudioOutput"), 9, VRL_L("Device is lost")};

/// Files become no longer than this.
class CFileLimit {
public:
    explicit CFileLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    CFileLimit(const CFileLimit&) = delete;
    CFileLimit& operator=(const CFileLimit&) = delete;
    ~CFileLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    void (*handler_)(int);
    rlimit before_{};
};

class FileAudioOutputLimit : public CFileTest {};

TEST_F(FileAudioOutputLimit, IsLostAndSaysWhyWhenItIsClosed) {
    const auto output =
        CRefPtr<IAudioOutput>::Adopt(CreateFileAudioOutput(ToVorlund(At("sound.wav")).c_str()));
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 480000);
    const CFileLimit limit(200000);
    ExpectRaises<CFailedException>(kWriteLost, [&] { output->Write(sound.data(), sound.size()); });
    EXPECT_EQ(output->GetState(), AUDIO_STATE_LOST);
    EXPECT_THROW(output->Close(), CIOException);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
    output->Close();
}

} // namespace
} // namespace vorlund::test
