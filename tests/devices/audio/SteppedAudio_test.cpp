// Devices whose time is advanced by hand, and what goes wrong with them.
#include "devices/audio/SteppedTest.h"

#include "support/Text.h"

#include <vorlund/ClassIds.h>
#include <vorlund/MemoryStream.h>
#include <vorlund/SetFormatIsf.h>

#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <vector>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/SteppedAudio");
constexpr const wchar* kA = VRL_L("a");
constexpr const wchar* kB = VRL_L("b");
constexpr TFailure kNoSuchDevice{VRL_L("vorlund::CSteppedPort::Open"),
                                 VRL_L("src/vorlund/devices/audio/SteppedPort"), 1,
                                 VRL_L("There is no such device")};
constexpr TFailure kInUse{VRL_L("vorlund::CSteppedPort::Open"),
                          VRL_L("src/vorlund/devices/audio/SteppedPort"), 2, VRL_L("Device is in use")};
constexpr TFailure kWriteLost{VRL_L("vorlund::CAudioOutput::Write"),
                              VRL_L("src/vorlund/devices/audio/AudioOutput"), 9, VRL_L("Device is lost")};
constexpr TFailure kDrainLost{VRL_L("vorlund::CAudioOutput::Drain"),
                              VRL_L("src/vorlund/devices/audio/AudioOutput"), 13, VRL_L("Device is lost")};
constexpr TFailure kBadDrift{VRL_L("vorlund::CSteppedAudio::SetDriftAt"), kFile, 11,
                             VRL_L("Drift must be -100000 to 100000 millionths")};

class SteppedAudio : public CSteppedTest {
protected:
    std::string List(TAudioDirection direction) {
        std::string text;
        const auto list = CRefPtr<IObjectList>::Adopt(system_->EnumerateDevices(direction));
        for (unsigned int i = 0; i < list->GetObjectCount(); ++i) {
            const auto object = CRefPtr<IObject>::Adopt(list->GetObject(i));
            const auto info = object.Query<IAudioDeviceInfo>();
            EXPECT_EQ(info->GetDirection(), direction);
            EXPECT_EQ(wstring(info->GetName()) +
                          (direction == AUDIO_DIRECTION_LOOPBACK ? VRL_L(".loopback") : VRL_L("")),
                      info->GetId());
            text += Narrow(info->GetId()) + (info->IsDefault() ? "* " : " ") +
                    std::to_string(info->GetChannels()) + " " + std::to_string(info->GetSamplesPerSec()) +
                    "\n";
        }
        return text;
    }
};

TEST_F(SteppedAudio, ListsItsDevices) {
    EXPECT_EQ(Narrow(system_->GetName()), "stepped");
    EXPECT_EQ(List(AUDIO_DIRECTION_OUTPUT), "a* 0 0\nb 0 0\n");
    audio_.SetDeviceFormat(kB, {SAMPLE_FORMAT_16BIT, 6, 44100});
    EXPECT_EQ(List(AUDIO_DIRECTION_INPUT), "a* 0 0\nb 6 44100\n");
    EXPECT_EQ(List(AUDIO_DIRECTION_LOOPBACK), "a.loopback* 0 0\nb.loopback 6 44100\n");
    EXPECT_FALSE(system_->GetChangeEvent().GetState());
    audio_.SetDefaultAt(10, kB);
    audio_.LoseAt(20, kB);
    audio_.ReturnAt(30, kB);
    audio_.Step(9);
    EXPECT_FALSE(system_->GetChangeEvent().GetState());
    audio_.Step(1);
    EXPECT_TRUE(system_->GetChangeEvent().GetState());
    EXPECT_EQ(List(AUDIO_DIRECTION_OUTPUT), "a 0 0\nb* 6 44100\n");
    EXPECT_FALSE(system_->GetChangeEvent().GetState());
    audio_.Step(10);
    EXPECT_EQ(List(AUDIO_DIRECTION_OUTPUT), "a* 0 0\n");
    audio_.Step(10);
    EXPECT_EQ(List(AUDIO_DIRECTION_OUTPUT), "a 0 0\nb* 6 44100\n");
    EXPECT_EQ(audio_.GetTime(), 30u);
}

TEST_F(SteppedAudio, TenMinutesInAMoment) {
    const auto output = CreateOutput();
    output->OpenOutput(kSixteenBits, 0.2);
    // The same words in every run: the sum of what is played is known.
    const auto stream = MakeStream(kSixteenBits, {});
    std::mt19937 random(5);
    stream->bytes.resize(std::size_t{600} * 48000 * 4);
    for (std::size_t i = 0; i < stream->bytes.size(); i += 4) {
        const std::uint32_t word = static_cast<std::uint32_t>(random());
        std::memcpy(stream->bytes.data() + i, &word, 4);
    }
    output->Play(Keep(stream));
    std::size_t same = 0;
    TBytes second(48000 * 4);
    for (std::size_t i = 0; i < 600; ++i) {
        audio_.Step(48000);
        ASSERT_EQ(audio_.GetPlayed(kA, i * second.size(), second.data(), second.size()), second.size());
        same += std::equal(second.begin(), second.end(),
                           stream->bytes.begin() + static_cast<std::ptrdiff_t>(i * second.size()))
                    ? 1
                    : 0;
        audio_.ForgetPlayed(kA);
    }
    EXPECT_EQ(same, 600u);
    EXPECT_EQ(output->GetPosition(), 600u * 48000);
    EXPECT_EQ(output->GetXruns(), 0u);
}

TEST_F(SteppedAudio, AStalledDeviceSaysSo) {
    const auto output = CreateOutput();
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 2000);
    output->Play(MakeKept(kSixteenBits, sound));
    audio_.StallAt(100, kA, 50);
    audio_.Step(100);
    audio_.Step(50);
    EXPECT_EQ(output->GetPosition(), 100u);
    EXPECT_EQ(output->GetXruns(), 1u);
    audio_.Step(1);
    EXPECT_EQ(output->GetPosition(), 101u);
    audio_.Step(1899);
    EXPECT_EQ(GetPlayed(), sound);
}

TEST_F(SteppedAudio, OthersDoNotNoticeAStall) {
    const auto output = CreateOutput(kA);
    const auto other = CreateOutput(kB);
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    other->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 500);
    output->Play(MakeKept(kSixteenBits, sound));
    other->Play(MakeKept(kSixteenBits, sound));
    audio_.StallAt(100, kA, 50);
    audio_.Step(300);
    EXPECT_EQ(output->GetPosition(), 250u);
    EXPECT_EQ(output->GetXruns(), 1u);
    EXPECT_EQ(other->GetPosition(), 300u);
    EXPECT_EQ(other->GetXruns(), 0u);
}

TEST_F(SteppedAudio, WithoutAnyDeviceOutputsWait) {
    const auto output = CreateOutput(VRL_L(""));
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 500);
    output->Write(sound.data(), sound.size());
    audio_.LoseAt(100, kB);
    audio_.LoseAt(200, kA);
    audio_.ReturnAt(300, kB);
    audio_.Step(200);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_LOST);
    EXPECT_EQ(output->GetPosition(), 200u);
    audio_.Step(400);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_RUNNING);
    EXPECT_EQ(output->GetPosition(), 500u);
    EXPECT_EQ(GetPlayed(kA), Part(sound, 0, 800));
    EXPECT_EQ(GetPlayed(kB), Part(sound, 800, 2000));
}

TEST_F(SteppedAudio, WhatIsForgottenIsCountedOnly) {
    const auto output = CreateOutput();
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 500);
    output->Write(sound.data(), sound.size());
    audio_.Step(100);
    audio_.ForgetPlayed(kA, false);
    audio_.Step(100);
    audio_.ForgetPlayed(kA);
    audio_.Step(100);
    EXPECT_EQ(audio_.GetPlayedSize(kA), 1200u);
    TBytes bytes(1200);
    EXPECT_EQ(audio_.GetPlayed(kA, 0, bytes.data(), bytes.size()), 0u);
    EXPECT_EQ(audio_.GetPlayed(kA, 1200, bytes.data(), bytes.size()), 0u);
    EXPECT_EQ(audio_.GetPlayed(kA, 800, bytes.data(), bytes.size()), 400u);
    EXPECT_EQ(Part(bytes, 0, 400), Part(sound, 800, 1200));
}

TEST_F(SteppedAudio, ALoopbackOfAnotherRateHearsSilence) {
    const auto output = CreateOutput();
    const auto input = CreateInput(VRL_L("a.loopback"));
    const TDataFormat_AudioPcm slow(SAMPLE_FORMAT_16BIT, 2, 24000);
    // What is opened first gives the steps their rate.
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    input->OpenInput(slow, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 400);
    output->Write(sound.data(), sound.size());
    audio_.Step(400);
    input->Stop();
    const auto stream = CRefPtr<IInputStream>::Adopt(input->GetStream());
    TBytes heard(2000, 1);
    heard.resize(static_cast<std::size_t>(stream->Read(heard.data(), heard.size())));
    EXPECT_EQ(heard, Silence(slow, 200));
}

TEST_F(SteppedAudio, ALostDeviceStaysLost) {
    const auto output = CreateOutput(kA);
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 2000);
    audio_.LoseAt(300, kA);
    CActor writer;
    writer.Start([&] {
        ExpectRaises<CFailedException>(kWriteLost, [&] { output->Write(sound.data(), sound.size()); });
    });
    while (output->GetDelay() < 512) std::this_thread::yield();
    audio_.Step(1000);
    EXPECT_TRUE(writer.Finishes());
    EXPECT_EQ(output->GetState(), AUDIO_STATE_LOST);
    EXPECT_EQ(output->GetPosition(), 300u);
    EXPECT_EQ(GetPlayed(), Part(sound, 0, 1200));
    ExpectRaises<CFailedException>(kDrainLost, [&] { output->Drain(); });
    ExpectRaises<CFailedException>(kNoSuchDevice,
                                   [&] { output->OpenOutput(kSixteenBits, kDefaultAudioLatency); });
    audio_.ReturnAt(0, kA);
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_RUNNING);
}

TEST_F(SteppedAudio, OutputsFollowTheDefault) {
    const auto output = CreateOutput();
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 5000);
    output->Play(MakeKept(kSixteenBits, sound));
    audio_.SetDefaultAt(1001, kB);
    audio_.LoseAt(2003, kB);
    audio_.LoseAt(3000, kA);
    audio_.ReturnAt(3500, kB);
    audio_.Step(3001);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_LOST);
    audio_.Step(2499);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_RUNNING);
    EXPECT_EQ(GetPlayed(kA), Joined(Part(sound, 0, 4004), Part(sound, 8012, 12000)));
    EXPECT_EQ(GetPlayed(kB), Joined(Part(sound, 4004, 8012), Part(sound, 12000, 20000)));
    EXPECT_EQ(output->GetPosition(), 5000u);
    EXPECT_EQ(output->GetXruns(), 0u);
}

TEST_F(SteppedAudio, AnotherDefaultMayHaveAnotherFormat) {
    const auto output = CreateOutput();
    const TDataFormat_AudioPcm wide(SAMPLE_FORMAT_32BIT, 2, 48000);
    audio_.SetDeviceFormat(kB, wide);
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 3000);
    const auto stream = MakeStream(kSixteenBits, sound);
    stream->maximumRead = 333;
    output->Play(Keep(stream));
    audio_.SetDefaultAt(1000, kB);
    audio_.SetDefaultAt(2000, kA);
    audio_.Step(3000);
    EXPECT_EQ(output->GetPosition(), 3000u);
    EXPECT_EQ(output->GetDeviceFormat().sampleFormat, SAMPLE_FORMAT_16BIT);
    EXPECT_EQ(GetPlayed(kA), Joined(Part(sound, 0, 4000), Part(sound, 8000, 12000)));
    TBytes expected;
    for (std::size_t i = 4000; i < 8000; i += 2) {
        expected.insert(expected.end(), {0, 0, sound[i], sound[i + 1]});
    }
    EXPECT_EQ(GetPlayed(kB), expected);
    const TBytes written = MakeSound(kSixteenBits, 100);
    output->Write(written.data(), written.size());
    audio_.Step(100);
    EXPECT_EQ(Part(GetPlayed(kA), 8000, 8400), written);
}

TEST_F(SteppedAudio, WithNothingQueuedOnlyTheFormatChanges) {
    const auto output = CreateOutput();
    const TDataFormat_AudioPcm wide(SAMPLE_FORMAT_32BIT, 2, 48000);
    audio_.SetDeviceFormat(kB, wide);
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    audio_.SetDefaultAt(0, kB);
    EXPECT_EQ(output->GetDeviceFormat().sampleFormat, SAMPLE_FORMAT_32BIT);
    EXPECT_EQ(output->GetDelay(), 0u);
    const TBytes sound = MakeSound(kSixteenBits, 100);
    output->Write(sound.data(), sound.size());
    audio_.Step(100);
    EXPECT_EQ(output->GetPosition(), 100u);
    TBytes expected;
    for (std::size_t i = 0; i < sound.size(); i += 2)
        expected.insert(expected.end(), {0, 0, sound[i], sound[i + 1]});
    EXPECT_EQ(GetPlayed(kB), expected);
    EXPECT_EQ(GetPlayed(kA), TBytes());
}

TEST_F(SteppedAudio, TheExampleOfItsPage) {
    // docs/audio-devices.md
    CSteppedAudio audio;
    const auto system = CRefPtr<IAudioSystem>::Adopt(audio.GetSystem());
    const auto output = CRefPtr<IAudioOutput>::Adopt(system->CreateOutput(nullptr));
    output->OpenOutput({SAMPLE_FORMAT_16BIT, 1, 48000}, kDefaultAudioLatency);
    const std::vector<std::int16_t> sound(1000, 7);
    const auto stream = CRefPtr<IInputStream>::Adopt(CreateMemoryInput(sound.data(), 2000));
    const auto pcm = CreateAs<ISetFormatIsf>(classid::CSetFormatIsf);
    const TDataFormat_AudioPcm format(SAMPLE_FORMAT_16BIT, 1, 48000);
    pcm->SetFormat(&format);
    pcm->Connect(stream.Get());
    output->Play(pcm.Get());
    audio.SetDefaultAt(300, VRL_L("b"));
    audio.Step(1000);
    EXPECT_EQ(audio.GetPlayedSize(VRL_L("a")), 600u);
    EXPECT_EQ(audio.GetPlayedSize(VRL_L("b")), 1400u);
    EXPECT_EQ(output->GetPosition(), 1000u);
}

TEST_F(SteppedAudio, ClocksDrift) {
    const auto one = CreateOutput(kA);
    const auto other = CreateOutput(kB);
    one->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    other->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const auto stream = MakeStream(kSixteenBits, MakeSound(kSixteenBits, 200000));
    const auto second = MakeStream(kSixteenBits, stream->bytes);
    one->Play(Keep(stream));
    other->Play(Keep(second));
    audio_.SetDriftAt(0, kB, 100);
    audio_.SetDriftAt(50000, kB, -100000);
    audio_.Step(50000);
    EXPECT_EQ(one->GetPosition(), 50000u);
    EXPECT_EQ(other->GetPosition(), 50005u);
    audio_.Step(100000);
    EXPECT_EQ(one->GetPosition(), 150000u);
    EXPECT_EQ(other->GetPosition(), 140005u);
    for (const std::int32_t drift : {-100001, 100001})
        ExpectRaises<CInvalidParameterException>(kBadDrift, [&] { audio_.SetDriftAt(0, kB, drift); });
}

TEST_F(SteppedAudio, ADevicePlaysOneOutputAtATime) {
    const auto one = CreateOutput();
    const auto other = CreateOutput(kA);
    one->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    ExpectRaises<CFailedException>(kInUse, [&] { other->Open(); });
    ExpectRaises<CFailedException>(kNoSuchDevice, [&] { CreateOutput(VRL_L("c"))->Open(); });
    one->Close();
    other->Open();
    EXPECT_EQ(other->GetState(), AUDIO_STATE_RUNNING);
}

TEST_F(SteppedAudio, WhoHasLostADeviceLeavesItToOthers) {
    const auto one = CreateOutput(kA);
    const auto other = CreateOutput(kA);
    one->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    audio_.LoseAt(0, kA);
    audio_.ReturnAt(0, kA);
    EXPECT_EQ(one->GetState(), AUDIO_STATE_LOST);
    other->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 100);
    other->Write(sound.data(), sound.size());
    one->Close();
    audio_.Step(100);
    EXPECT_EQ(other->GetPosition(), 100u);
    EXPECT_EQ(GetPlayed(), sound);
    ExpectRaises<CFailedException>(kInUse, [&] { one->Open(); });
}

TEST_F(SteppedAudio, OutputsOutliveIt) {
    auto audio = std::make_unique<CSteppedAudio>();
    const auto system = CRefPtr<IAudioSystem>::Adopt(audio->GetSystem());
    const auto output = CRefPtr<IAudioOutput>::Adopt(system->CreateOutput(kA));
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    audio.reset();
    EXPECT_EQ(output->GetState(), AUDIO_STATE_LOST);
    EXPECT_TRUE(system->GetChangeEvent().GetState());
    ExpectRaises<CFailedException>(kNoSuchDevice, [&] { output->Open(); });
}

TEST_F(SteppedAudio, OtherDevicesAreRefused) {
    const auto expect = [&](const wchar* method, int line, const std::function<void()>& act) {
        ExpectRaises<CInvalidParameterException>({method, kFile, line, VRL_L("No such device")}, act);
    };
    constexpr const wchar* kC = VRL_L("c");
    expect(VRL_L("vorlund::CSteppedAudio::StallAt"), 1, [&] { audio_.StallAt(0, kC, 1); });
    expect(VRL_L("vorlund::CSteppedAudio::LoseAt"), 2, [&] { audio_.LoseAt(0, nullptr); });
    expect(VRL_L("vorlund::CSteppedAudio::ReturnAt"), 3, [&] { audio_.ReturnAt(0, kC); });
    expect(VRL_L("vorlund::CSteppedAudio::SetDefaultAt"), 4, [&] { audio_.SetDefaultAt(0, kC); });
    expect(VRL_L("vorlund::CSteppedAudio::SetDriftAt"), 5, [&] { audio_.SetDriftAt(0, kC, 1); });
    expect(VRL_L("vorlund::CSteppedAudio::SetDeviceFormat"), 6,
           [&] { audio_.SetDeviceFormat(kC, kSixteenBits); });
    expect(VRL_L("vorlund::CSteppedAudio::GetPlayed"), 7, [&] { audio_.GetPlayed(kC, 0, nullptr, 0); });
    expect(VRL_L("vorlund::CSteppedAudio::GetPlayedSize"), 8, [&] { audio_.GetPlayedSize(kC); });
    expect(VRL_L("vorlund::CSteppedAudio::ForgetPlayed"), 9, [&] { audio_.ForgetPlayed(kC); });
    expect(VRL_L("vorlund::CSteppedAudio::SetInput"), 10, [&] { audio_.SetInput(kC, nullptr, 0); });
    ExpectRaises<CNullPtrException>(
        {VRL_L("vorlund::CSteppedAudio::GetPlayed"), kFile, 12, VRL_L("buffer is NULL")},
        [&] { audio_.GetPlayed(kA, 0, nullptr, 1); });
    ExpectRaises<CNullPtrException>(
        {VRL_L("vorlund::CSteppedAudio::SetInput"), kFile, 13, VRL_L("buffer is NULL")},
        [&] { audio_.SetInput(kA, nullptr, 1); });
}

} // namespace
} // namespace vorlund::test
