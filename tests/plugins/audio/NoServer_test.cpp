// A sound server that is not there.
#include "plugins/audio/AudioPluginTest.h"

#include <functional>

namespace vorlund::test {
namespace {

TEST(NoServer, SaysThatThereIsNoServer) {
    const CTemporaryFolder folder;
    const CEnvironment environment(
        {{"PULSE_SERVER", "unix:" + folder.GetPath().string() + "/none"}, {"SDL_AUDIODRIVER", "pulseaudio"}});
    const CLibraryScope library;
    CPluginStore store;
    store.AddPluginPath(ToVorlund(BesideProgram("vorlund-plugins")).c_str());
    store.LoadPlugin(VRL_L("audio"));
    {
        const auto system = CreateAs<IAudioSystem>(kAudioSystemClassId);
        const auto output = CRefPtr<IAudioOutput>::Adopt(system->CreateOutput(nullptr));
        for (const std::function<void()>& act :
             {std::function<void()>([&] { system->EnumerateDevices(AUDIO_DIRECTION_OUTPUT); }),
              std::function<void()>([&] { output->Open(); })}) {
            const std::string outcome = Outcome(act);
            EXPECT_TRUE(outcome.starts_with("CFailedException CSdlThread::Begin")) << outcome;
            // In SDL's words.
            EXPECT_NE(outcome.find("PulseAudio"), std::string::npos) << outcome;
        }
    }
    store.Close();
}

} // namespace
} // namespace vorlund::test
