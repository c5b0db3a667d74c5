// Devices of a sound server that come, go and become the default one.
#include "plugins/audio/PulseTest.h"

namespace vorlund::test {
namespace {

class PulseDevices : public CPulseTest {
protected:
    /// Waits until the list is `expected`; each wait ends with a change.
    void ExpectNames(TAudioDirection direction, const std::string& expected) {
        std::string names = Names(direction);
        while (names != expected) {
            WaitForChange();
            names = Names(direction);
        }
    }
};

TEST_F(PulseDevices, AreListedWithTheirFormats) {
    EXPECT_EQ(Narrow(System().GetName()), "PulseAudio");
    EXPECT_EQ(Names(AUDIO_DIRECTION_OUTPUT), "One*, Two");
    EXPECT_EQ(Names(AUDIO_DIRECTION_INPUT), "");
    EXPECT_EQ(Names(AUDIO_DIRECTION_LOOPBACK), "Monitor of One*, Monitor of Two");
    for (const TListedDevice& device : List(AUDIO_DIRECTION_OUTPUT)) {
        EXPECT_EQ(device.id, device.name);
        EXPECT_EQ(device.channels, 2u);
        EXPECT_EQ(device.samplesPerSec, 48000u);
    }
    EXPECT_FALSE(System().GetChangeEvent().GetState());
}

TEST_F(PulseDevices, ComeAndGo) {
    EXPECT_EQ(Names(AUDIO_DIRECTION_OUTPUT), "One*, Two");
    const std::string module = server_.AddOutput("Three");
    ExpectNames(AUDIO_DIRECTION_OUTPUT, "One*, Two, Three");
    ExpectNames(AUDIO_DIRECTION_LOOPBACK, "Monitor of One*, Monitor of Two, Monitor of Three");
    server_.RemoveModule(module);
    ExpectNames(AUDIO_DIRECTION_OUTPUT, "One*, Two");
}

TEST_F(PulseDevices, OfOneNameAreNumbered) {
    server_.AddOutput("again", "One");
    EXPECT_EQ(Names(AUDIO_DIRECTION_OUTPUT), "One*, Two, One (2)");
    EXPECT_EQ(Names(AUDIO_DIRECTION_LOOPBACK), "Monitor of One*, Monitor of Two, Monitor of One (2)*");
    const auto output = MakeOutput("One (2)");
    output->OpenOutput(kServerFormat, kDefaultAudioLatency);
    EXPECT_NE(server_.Control("list short sinks").find("again"), std::string::npos);
    output->Close();
}

TEST_F(PulseDevices, ChangeWhenAnotherOneIsTheDefault) {
    EXPECT_EQ(Names(AUDIO_DIRECTION_OUTPUT), "One*, Two");
    server_.Control("set-default-sink Two");
    WaitForChange();
    EXPECT_EQ(Names(AUDIO_DIRECTION_OUTPUT), "One, Two*");
    EXPECT_EQ(Names(AUDIO_DIRECTION_LOOPBACK), "Monitor of One, Monitor of Two*");
}

TEST_F(PulseDevices, ChangeForEachSystemObject) {
    const auto other = CreateAs<IAudioSystem>(kAudioSystemClassId);
    EXPECT_EQ(Names(AUDIO_DIRECTION_OUTPUT), "One*, Two");
    server_.AddOutput("Three");
    WaitForChange();
    other->GetChangeEvent().Wait(kSoundLimit);
    ExpectNames(AUDIO_DIRECTION_OUTPUT, "One*, Two, Three");
    EXPECT_TRUE(other->GetChangeEvent().GetState());
}

TEST_F(PulseDevices, AreThereAgainWhenTheServerIs) {
    EXPECT_EQ(Names(AUDIO_DIRECTION_OUTPUT), "One*, Two");
    const auto output = MakeOutput("One");
    output->OpenOutput(kServerFormat, kDefaultAudioLatency);
    server_.Kill();
    WaitForState(*output, AUDIO_STATE_LOST);
    output->Close();
    EXPECT_THROW(System().EnumerateDevices(AUDIO_DIRECTION_OUTPUT), CFailedException);
    server_.Start();
    server_.AddOutput("Three");
    EXPECT_EQ(Names(AUDIO_DIRECTION_OUTPUT), "One*, Two, Three");
    output->OpenOutput(kServerFormat, kDefaultAudioLatency);
    output->Close();
}

} // namespace
} // namespace vorlund::test
