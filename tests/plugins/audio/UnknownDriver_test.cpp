// A driver that SDL does not have.
#include "plugins/audio/AudioPluginTest.h"

namespace vorlund::test {
namespace {

class UnknownDriver : public CAudioPluginTest {
protected:
    const CEnvironment environment_{{{"SDL_AUDIODRIVER", "nonesuch"}}};
};

TEST_F(UnknownDriver, SaysSo) {
    const TFailure expected{VRL_L("CSdlThread::Begin"), VRL_L("plugins/audio/SdlThread"), 3,
                            VRL_L("Audio target 'nonesuch' not available")};
    ExpectRaises<CFailedException>(expected, [&] { System().EnumerateDevices(AUDIO_DIRECTION_OUTPUT); });
    ExpectRaises<CFailedException>(expected, [&] {
        MakeOutput()->OpenOutput({SAMPLE_FORMAT_FLOAT, 2, 48000}, kDefaultAudioLatency);
    });
    ExpectRaises<CFailedException>(expected, [&] {
        MakeInput()->OpenInput({SAMPLE_FORMAT_FLOAT, 2, 48000}, kDefaultAudioLatency);
    });
    EXPECT_EQ(Narrow(System().GetName()), "SDL");
}

} // namespace
} // namespace vorlund::test
