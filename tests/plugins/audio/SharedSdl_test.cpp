// An application that uses SDL itself, beside the plug-in.
#include "plugins/audio/AudioPluginTest.h"

#include "audio/SdlLibrary.h"

#include <csignal>

namespace vorlund::test {
namespace {

constexpr TDataFormat_AudioPcm kFormat{SAMPLE_FORMAT_16BIT, 2, 48000};

class SharedSdl : public CAudioPluginTest {
protected:
    SharedSdl() { sdl_.SetMainReady(); }

    /// A device of the application.
    SDL_AudioDeviceID OpenOwn() const {
        SDL_AudioSpec spec{};
        spec.freq = 48000;
        spec.format = AUDIO_S16SYS;
        spec.channels = 2;
        spec.samples = 1024;
        const std::string path = (folder_.GetPath() / "own.raw").string();
        return sdl_.OpenAudioDevice(path.c_str(), 0, &spec, nullptr, 0);
    }
    static void Play(IAudioOutput& output) {
        const TBytes sound = MakeNoise(kFormat, 4800);
        EXPECT_EQ(output.Write(sound.data(), sound.size()), sound.size());
        EXPECT_TRUE(output.Drain());
    }

    const CTemporaryFolder folder_;
    const CEnvironment environment_{
        {{"SDL_AUDIODRIVER", "disk"}, {"SDL_DISKAUDIOFILE", (folder_.GetPath() / "a.raw").string()}}};
    const TSdlLibrary& sdl_ = *FindSdlLibrary();
};

TEST_F(SharedSdl, GoesOnForTheApplicationWhenThePlugInHasEnded) {
    ASSERT_EQ(sdl_.InitSubSystem(SDL_INIT_AUDIO), 0);
    const SDL_AudioDeviceID own = OpenOwn();
    ASSERT_NE(own, 0u);
    sdl_.PauseAudioDevice(own, 0);
    {
        const auto output = MakeOutput();
        output->OpenOutput(kFormat, kDefaultAudioLatency);
        Play(*output);
        output->Close();
    }
    system_.Reset();
    EXPECT_NE(sdl_.WasInit(SDL_INIT_AUDIO), 0u);
    EXPECT_EQ(sdl_.GetAudioDeviceStatus(own), SDL_AUDIO_PLAYING);
    sdl_.CloseAudioDevice(own);
    sdl_.QuitSubSystem(SDL_INIT_AUDIO);
    EXPECT_EQ(sdl_.WasInit(SDL_INIT_AUDIO), 0u);
}

TEST_F(SharedSdl, GoesOnForThePlugInWhenTheApplicationHasEnded) {
    const auto output = MakeOutput();
    output->OpenOutput(kFormat, kDefaultAudioLatency);
    ASSERT_EQ(sdl_.InitSubSystem(SDL_INIT_AUDIO), 0);
    sdl_.QuitSubSystem(SDL_INIT_AUDIO);
    Play(*output);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_RUNNING);
    output->Close();
    system_.Reset();
    EXPECT_EQ(sdl_.WasInit(SDL_INIT_AUDIO), 0u);
}

TEST_F(SharedSdl, LeavesHintsAndSignalHandlersAlone) {
    struct sigaction before {};
    sigaction(SIGINT, nullptr, &before);
    EXPECT_EQ(List(AUDIO_DIRECTION_OUTPUT).size(), 1u);
    struct sigaction after {};
    sigaction(SIGINT, nullptr, &after);
    EXPECT_EQ(before.sa_handler, after.sa_handler);
    EXPECT_EQ(sdl_.GetHint(SDL_HINT_NO_SIGNAL_HANDLERS), nullptr);
    EXPECT_EQ(sdl_.GetHint(SDL_HINT_AUDIO_INCLUDE_MONITORS), nullptr);
}

} // namespace
} // namespace vorlund::test
