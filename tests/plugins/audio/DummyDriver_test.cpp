// SDL's driver whose time passes and that nobody hears.
#include "plugins/audio/AudioPluginTest.h"

#include <vorlund/DeviceClassStore.h>

#include <chrono>
#include <thread>

namespace vorlund::test {
namespace {

constexpr TDataFormat_AudioPcm kFloats{SAMPLE_FORMAT_FLOAT, 2, 48000};

class DummyDriver : public CAudioPluginTest {
protected:
    const CEnvironment environment_{{{"SDL_AUDIODRIVER", "dummy"}}};
};

TEST_F(DummyDriver, HasOneOutputAndOneInput) {
    EXPECT_EQ(Narrow(System().GetName()), "SDL dummy");
    EXPECT_EQ(List(AUDIO_DIRECTION_OUTPUT).size(), 1u);
    EXPECT_TRUE(List(AUDIO_DIRECTION_OUTPUT)[0].isDefault);
    EXPECT_EQ(List(AUDIO_DIRECTION_INPUT).size(), 1u);
    EXPECT_EQ(List(AUDIO_DIRECTION_LOOPBACK).size(), 0u);
}

TEST_F(DummyDriver, TakesAsLongAsTheSound) {
    const auto output = MakeOutput();
    output->OpenOutput(kFloats, kDefaultAudioLatency);
    EXPECT_EQ(output->GetDeviceFormat().samplesPerSec, 48000u);
    const auto start = std::chrono::steady_clock::now();
    const TBytes sound = MakeNoise(kFloats, 24000);
    EXPECT_EQ(output->Write(sound.data(), sound.size()), sound.size());
    EXPECT_TRUE(output->Drain());
    EXPECT_EQ(output->GetPosition(), 24000u);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    EXPECT_GT(passed.count(), 0.4);
    output->Close();
}

TEST_F(DummyDriver, TakesEachLatency) {
    const auto output = MakeOutput();
    for (const double latency : {0.001, 0.005, 0.03, 0.1, 1.0, 10.0}) {
        output->OpenOutput(kFloats, latency);
        const TBytes sound = MakeNoise(kFloats, 100);
        EXPECT_EQ(output->Write(sound.data(), sound.size()), sound.size());
        EXPECT_GT(output->GetLatency(), 0.0);
        output->Flush();
    }
    output->Close();
}

TEST_F(DummyDriver, OpensAndClosesAThousandTimes) {
    const auto output = MakeOutput();
    constexpr TDataFormat_AudioPcm kFast{SAMPLE_FORMAT_16BIT, 1, 192000};
    const TBytes sound = MakeNoise(kFast, 10);
    for (int i = 0; i < 1000; ++i) {
        output->OpenOutput(kFast, 0.001);
        ASSERT_EQ(output->Write(sound.data(), sound.size()), sound.size());
        output->Close();
    }
}

TEST_F(DummyDriver, IsClosedFromAnotherThreadWhileOneWrites) {
    const auto output = MakeOutput();
    output->OpenOutput(kFloats, 0.02);
    output->SetPaused(true);
    const TBytes sound = MakeNoise(kFloats, 48000);
    // What does not fit waits until the other thread closes.
    std::thread closer([&] { CloseWhileWriting(*output); });
    EXPECT_LT(output->Write(sound.data(), sound.size()), sound.size());
    closer.join();
    EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
}

TEST_F(DummyDriver, SaysThatItsOnlyOutputIsTaken) {
    const auto one = MakeOutput();
    const auto other = MakeOutput();
    one->OpenOutput(kFloats, kDefaultAudioLatency);
    ExpectRaises<CFailedException>(
        {VRL_L("CSdlThread::Open"), VRL_L("plugins/audio/SdlThread"), 5, VRL_L("Audio device already open")},
        [&] { other->OpenOutput(kFloats, kDefaultAudioLatency); });
    one->Close();
    other->OpenOutput(kFloats, kDefaultAudioLatency);
    other->Close();
}

TEST_F(DummyDriver, DoesNotOpenADeviceThatIsNotListed) {
    const auto output = MakeOutput("no such device");
    ExpectRaises<CFailedException>(
        {VRL_L("CSdlThread::Open"), VRL_L("plugins/audio/SdlThread"), 4, VRL_L("No such device")},
        [&] { output->OpenOutput(kFloats, kDefaultAudioLatency); });
    EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
}

TEST_F(DummyDriver, IsTheDeviceOfTheStore) {
    const auto device = CRefPtr<IDevice>::Adopt(v.GetDeviceClassStore().CreateDevice(DEVICE_TYPE_AUDIO));
    device->Open();
    const auto output = device.Query<IAudioOutput>();
    ASSERT_TRUE(output);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_RUNNING);
    device->Close();
}

TEST_F(DummyDriver, RecordsSilence) {
    const auto input = MakeInput();
    input->OpenInput(kFloats, kDefaultAudioLatency);
    const auto stream = CRefPtr<IInputStream>::Adopt(input->GetStream());
    TBytes bytes(4800 * kFloats.GetBlockSize(), 1);
    EXPECT_EQ(stream->Read(bytes.data(), bytes.size()), bytes.size());
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), static_cast<std::ptrdiff_t>(bytes.size()));
    input->Close();
}

TEST_F(DummyDriver, OutlivesTheSystemThatMadeIt) {
    const auto output = MakeOutput();
    system_.Reset();
    output->OpenOutput(kFloats, kDefaultAudioLatency);
    const TBytes sound = MakeNoise(kFloats, 4800);
    EXPECT_EQ(output->Write(sound.data(), sound.size()), sound.size());
    EXPECT_TRUE(output->Drain());
    output->Close();
}

TEST_F(DummyDriver, RefusesAnUnknownDirection) {
    ExpectRaises<CInvalidParameterException>(
        {VRL_L("CSdlAudioSystem::EnumerateDevices"), VRL_L("plugins/audio/AudioSystem"), 1,
         VRL_L("Unknown direction")},
        [&] { System().EnumerateDevices(static_cast<TAudioDirection>(3)); });
}

} // namespace
} // namespace vorlund::test
