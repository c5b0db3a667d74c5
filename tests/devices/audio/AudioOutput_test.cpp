// Outputs: what is played is what was written.
#include "devices/audio/SteppedTest.h"

#include <vorlund/AudioPort.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <thread>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/AudioOutput");
constexpr const wchar* kOpen = VRL_L("vorlund::CAudioOutput::OpenOutput");
constexpr TFailure kBadFormat{kOpen, kFile, 1, VRL_L("Unsupported audio format")};
constexpr TFailure kBadLatency{kOpen, kFile, 2, VRL_L("Latency must be 1 millisecond to 10 seconds")};
constexpr TFailure kNoBuffer{VRL_L("vorlund::CAudioOutput::Write"), kFile, 6, VRL_L("buffer is NULL")};
constexpr TFailure kOddSize{VRL_L("vorlund::CAudioOutput::Write"), kFile, 7,
                            VRL_L("Size is no whole number of frames")};
constexpr TFailure kNoPort{VRL_L("vorlund::CreateAudioOutput"), kFile, 26, VRL_L("port is NULL")};
constexpr TFailure kBadVolume{VRL_L("vorlund::CAudioOutput::SetVolume"), kFile, 25,
                              VRL_L("Volume must be 0 to 16")};

class AudioOutput : public CSteppedTest {};

TEST_F(AudioOutput, EachFormatIsPlayedAsItIs) {
    const auto output = CreateOutput();
    TBytes expected;
    for (const TDataFormat_AudioPcm& format : kEachFormat) {
        output->OpenOutput(format, kDefaultAudioLatency);
        const TBytes sound = MakeSound(format, 500);
        EXPECT_EQ(output->Write(sound.data(), sound.size()), sound.size());
        audio_.Step(300 * 8);
        EXPECT_EQ(output->GetXruns(), 1u);
        EXPECT_EQ(output->GetPosition(), 500u);
        const TBytes played = GetPlayed();
        const TBytes now(played.begin() + static_cast<std::ptrdiff_t>(expected.size()), played.end());
        ASSERT_GE(now.size(), sound.size());
        EXPECT_EQ(Part(now, 0, sound.size()), sound);
        const std::size_t rest = now.size() / format.GetBlockSize() - 500;
        EXPECT_EQ(Part(now, sound.size(), now.size()), Silence(format, rest));
        expected = played;
        output->Close();
    }
}

TEST_F(AudioOutput, PositionIsThatOfTheFrameThatIsHeard) {
    const auto output = CreateOutput();
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    EXPECT_EQ(output->GetLatency(), 512.0 / 48000);
    EXPECT_EQ(output->GetWritable(), 512u * 4);
    const TBytes sound = MakeSound(kSixteenBits, 512);
    output->Write(sound.data(), sound.size());
    EXPECT_EQ(output->GetWritable(), 0u);
    EXPECT_EQ(output->GetDelay(), 512u);
    for (std::uint64_t at = 0; at < 512; at += 64) {
        EXPECT_EQ(output->GetPosition(), at);
        EXPECT_EQ(output->GetDelay(), 512 - at);
        audio_.Step(64);
    }
    audio_.Step(100);
    EXPECT_EQ(output->GetPosition(), 512u);
    EXPECT_EQ(output->GetXruns(), 1u);
    output->Write(sound.data(), sound.size());
    audio_.Step(10);
    EXPECT_EQ(output->GetPosition(), 522u);
    EXPECT_EQ(output->GetXruns(), 1u);
    EXPECT_EQ(GetPlayed(), Joined(Joined(sound, Silence(kSixteenBits, 100)), Part(sound, 0, 40)));
}

TEST_F(AudioOutput, PausedTimeStandsStill) {
    const auto output = CreateOutput();
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 400);
    output->Write(sound.data(), sound.size());
    audio_.Step(130);
    output->SetPaused(true);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_PAUSED);
    EXPECT_FALSE(output->Drain());
    audio_.Step(1000);
    EXPECT_EQ(output->GetPosition(), 130u);
    EXPECT_EQ(output->GetDelay(), 270u);
    output->SetPaused(false);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_RUNNING);
    audio_.Step(270);
    EXPECT_EQ(output->GetXruns(), 0u);
    EXPECT_EQ(GetPlayed(), Joined(Joined(Part(sound, 0, 520), Silence(kSixteenBits, 1000)),
                                  Part(sound, 520, sound.size())));
}

TEST_F(AudioOutput, FlushDropsWhatTheDeviceHasNotTaken) {
    const auto output = CreateOutput();
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 512);
    output->Write(sound.data(), sound.size());
    audio_.Step(100);
    output->Flush();
    EXPECT_EQ(output->GetPosition(), 100u);
    EXPECT_EQ(output->GetDelay(), 0u);
    EXPECT_EQ(output->GetWritable(), 512u * 4);
    audio_.Step(50);
    const TBytes other = MakeSound(kSixteenBits, 200, 2);
    output->Write(other.data(), other.size());
    audio_.Step(200);
    EXPECT_EQ(output->GetPosition(), 300u);
    EXPECT_EQ(output->GetXruns(), 0u);
    EXPECT_EQ(GetPlayed(), Joined(Joined(Part(sound, 0, 400), Silence(kSixteenBits, 50)), other));
}

TEST_F(AudioOutput, VolumeTakesEffectAtOnce) {
    const auto output = CreateOutput();
    EXPECT_EQ(output->GetVolume(), 1.0F);
    const TDataFormat_AudioPcm floats(SAMPLE_FORMAT_FLOAT, 2, 48000);
    output->OpenOutput(floats, kDefaultAudioLatency);
    const float frames[] = {0.5F, -1.0F, 0.25F, 1.5F, 0.125F, 0.0F};
    output->Write(frames, sizeof(frames));
    audio_.Step(1);
    output->SetVolume(0.5F);
    audio_.Step(1);
    output->SetVolume(16);
    audio_.Step(1);
    float played[6];
    EXPECT_EQ(audio_.GetPlayed(VRL_L("a"), 0, played, sizeof(played)), sizeof(played));
    const float expected[] = {0.5F, -1.0F, 0.125F, 0.75F, 2.0F, 0.0F};
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(played[i], expected[i]) << i;

    output->OpenOutput({SAMPLE_FORMAT_16BIT, 1, 48000}, kDefaultAudioLatency);
    const std::int16_t loud[] = {1000, -3000, 16};
    output->Write(loud, sizeof(loud));
    audio_.Step(3);
    std::int16_t clipped[3];
    EXPECT_EQ(audio_.GetPlayed(VRL_L("a"), sizeof(played), clipped, sizeof(clipped)), sizeof(clipped));
    EXPECT_EQ(clipped[0], 16000);
    EXPECT_EQ(clipped[1], -32768);
    EXPECT_EQ(clipped[2], 256);
}

TEST_F(AudioOutput, WriteWaitsForRoom) {
    const auto output = CreateOutput();
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 5000);
    CActor writer;
    writer.Start([&] { EXPECT_EQ(output->Write(sound.data(), sound.size()), sound.size()); });
    while (output->GetDelay() < 512) std::this_thread::yield();
    audio_.Step(5000);
    EXPECT_TRUE(writer.Finishes());
    EXPECT_EQ(GetPlayed(), sound);
    EXPECT_EQ(output->GetXruns(), 0u);
}

TEST_F(AudioOutput, CloseAndFlushEndTheWaitsOfOthers) {
    const auto output = CreateOutput();
    const TBytes sound = MakeSound(kSixteenBits, 5000);
    for (const bool closes : {false, true}) {
        output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
        CActor writer, drainer;
        writer.Start([&] { EXPECT_EQ(output->Write(sound.data(), sound.size()), 512u * 4); });
        while (output->GetDelay() < 512) std::this_thread::yield();
        drainer.Start([&] { EXPECT_FALSE(output->Drain()); });
        EXPECT_TRUE(writer.StaysBusy());
        EXPECT_TRUE(drainer.StaysBusy());
        closes ? output->Close() : output->Flush();
        EXPECT_TRUE(writer.Finishes());
        EXPECT_TRUE(drainer.Finishes());
    }
    EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
}

TEST_F(AudioOutput, WritersFollowEachOther) {
    const auto output = CreateOutput();
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes first = MakeSound(kSixteenBits, 1000);
    const TBytes second = MakeSound(kSixteenBits, 1000, 2);
    const TBytes third = MakeSound(kSixteenBits, 700, 3);
    CActor writer, other;
    writer.Start([&] { EXPECT_EQ(output->Write(first.data(), first.size()), first.size()); });
    while (output->GetDelay() < 512) std::this_thread::yield();
    EXPECT_EQ(output->GetWritable(), 0u);
    std::atomic<bool> isDone = false;
    other.Start([&] {
        EXPECT_EQ(output->Write(second.data(), second.size()), second.size());
        isDone = true;
    });
    EXPECT_TRUE(other.StaysBusy());
    while (!isDone || output->GetDelay() > 0) audio_.Step(100);
    EXPECT_TRUE(writer.Finishes());
    EXPECT_TRUE(other.Finishes());
    // The device does not wait between the two.
    const TBytes played = GetPlayed();
    EXPECT_EQ(Part(played, 0, first.size()), first);
    EXPECT_NE(std::search(played.begin() + static_cast<std::ptrdiff_t>(first.size()), played.end(),
                          second.begin(), second.end()),
              played.end());
    // Who waits for another writer is dropped with him.
    writer.Start([&] { EXPECT_EQ(output->Write(third.data(), third.size()), 512u * 4); });
    while (output->GetDelay() < 512) std::this_thread::yield();
    other.Start([&] { EXPECT_EQ(output->Write(third.data(), third.size()), 0u); });
    EXPECT_TRUE(other.StaysBusy());
    output->Flush();
    EXPECT_TRUE(writer.Finishes());
    EXPECT_TRUE(other.Finishes());
}

TEST_F(AudioOutput, DrainWaitsForTheLastFrame) {
    const auto output = CreateOutput();
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    EXPECT_TRUE(output->Drain());
    const TBytes sound = MakeSound(kSixteenBits, 300);
    output->Write(sound.data(), sound.size());
    CActor drainer;
    drainer.Start([&] { EXPECT_TRUE(output->Drain()); });
    audio_.Step(299);
    EXPECT_TRUE(drainer.StaysBusy());
    audio_.Step(1);
    EXPECT_TRUE(drainer.Finishes());
    audio_.Step(1000);
    EXPECT_EQ(output->GetXruns(), 0u);
}

TEST_F(AudioOutput, LatenciesAreWholePeriods) {
    const auto output = CreateOutput();
    for (const double latency : {0.001, 0.0105, 0.5, 10.0}) {
        output->OpenOutput(kSixteenBits, latency);
        EXPECT_NEAR(output->GetLatency(), latency, 0.02) << latency;
        EXPECT_EQ(output->GetWritable(), std::lround(output->GetLatency() * 48000) * 4);
    }
    output->OpenOutput({SAMPLE_FORMAT_8BIT, 1, 1000}, 0.001);
    EXPECT_GE(output->GetWritable(), 2u);
    const std::uint8_t byte = 7;
    EXPECT_EQ(output->Write(&byte, 1), 1u);
    // A frame of the device that was opened first is shorter.
    audio_.Step(48);
    EXPECT_EQ(output->GetPosition(), 1u);
}

TEST_F(AudioOutput, ImpossibleWishesAreRefused) {
    const auto output = CreateOutput();
    for (const TDataFormat_AudioPcm& format :
         {TDataFormat_AudioPcm(4, 2, 48000), TDataFormat_AudioPcm(1, 0, 48000),
          TDataFormat_AudioPcm(1, 9, 48000), TDataFormat_AudioPcm(1, 2, 999),
          TDataFormat_AudioPcm(1, 2, 768001)}) {
        output->Open();
        ExpectRaises<CDataFormatException>(kBadFormat, [&] { output->OpenOutput(format, 0.1); });
        EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
    }
    for (const double latency : {-1.0, 0.0009, 10.1, std::numeric_limits<double>::quiet_NaN()})
        ExpectRaises<CInvalidParameterException>(kBadLatency,
                                                 [&] { output->OpenOutput(kSixteenBits, latency); });
    ExpectRaises<CNullPtrException>(kNoPort, [] { CreateAudioOutput(nullptr); });
    for (const float volume : {-0.1F, 16.1F, std::numeric_limits<float>::quiet_NaN()})
        ExpectRaises<CInvalidParameterException>(kBadVolume, [&] { output->SetVolume(volume); });
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    ExpectRaises<CNullPtrException>(kNoBuffer, [&] { output->Write(nullptr, 4); });
    ExpectRaises<CInvalidParameterException>(kOddSize, [&] { output->Write(&audio_, 3); });
    EXPECT_EQ(output->Write(nullptr, 0), 0u);
}

TEST_F(AudioOutput, NothingButItsStateIsKnownWhileClosed) {
    const auto output = CreateOutput();
    const auto expect = [&](const wchar* method, int line, const std::function<void()>& act) {
        ExpectRaises<CInvalidStateException>({method, kFile, line, VRL_L("Device is not open")}, act);
    };
    expect(VRL_L("vorlund::CAudioOutput::Write"), 14, [&] { output->Write(nullptr, 0); });
    expect(VRL_L("vorlund::CAudioOutput::GetWritable"), 15, [&] { output->GetWritable(); });
    expect(VRL_L("vorlund::CAudioOutput::Play"), 16, [&] { output->Play(nullptr); });
    expect(VRL_L("vorlund::CAudioOutput::GetPlayingStreams"), 17, [&] { output->GetPlayingStreams(); });
    expect(VRL_L("vorlund::CAudioOutput::SetPaused"), 18, [&] { output->SetPaused(true); });
    expect(VRL_L("vorlund::CAudioOutput::Drain"), 19, [&] { output->Drain(); });
    expect(VRL_L("vorlund::CAudioOutput::Flush"), 20, [&] { output->Flush(); });
    expect(VRL_L("vorlund::CAudioOutput::GetPosition"), 21, [&] { output->GetPosition(); });
    expect(VRL_L("vorlund::CAudioOutput::GetDelay"), 22, [&] { output->GetDelay(); });
    expect(VRL_L("vorlund::CAudioOutput::GetDeviceFormat"), 23, [&] { output->GetDeviceFormat(); });
    expect(VRL_L("vorlund::CAudioOutput::GetLatency"), 24, [&] { output->GetLatency(); });
    expect(VRL_L("vorlund::CAudioOutput::GetFormat"), 28, [&] { output->GetFormat(); });
    EXPECT_EQ(output->GetXruns(), 0u);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
    output->Close();
}

TEST_F(AudioOutput, XrunsOfTheLastOpeningStay) {
    const auto output = CreateOutput();
    output->Open();
    const TBytes sound = Silence({SAMPLE_FORMAT_FLOAT, 2, 48000}, 10);
    output->Write(sound.data(), sound.size());
    audio_.Step(20);
    output->Close();
    EXPECT_EQ(output->GetXruns(), 1u);
    output->Open();
    EXPECT_EQ(output->GetXruns(), 0u);
}

TEST_F(AudioOutput, TwoPlayAtOnce) {
    const auto one = CreateOutput(VRL_L("a"));
    const auto other = CreateOutput(VRL_L("b"));
    one->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    other->OpenOutput({SAMPLE_FORMAT_8BIT, 1, 24000}, kDefaultAudioLatency);
    const TBytes first = MakeSound(kSixteenBits, 3000, 1);
    const TBytes second = MakeSound({SAMPLE_FORMAT_8BIT, 1, 24000}, 1500, 2);
    one->Play(MakeKept(kSixteenBits, first));
    other->Play(MakeKept({SAMPLE_FORMAT_8BIT, 1, 24000}, second));
    audio_.Step(3000);
    EXPECT_EQ(GetPlayed(VRL_L("a")), first);
    EXPECT_EQ(GetPlayed(VRL_L("b")), second);
}

TEST_F(AudioOutput, OpensAndClosesAThousandTimes) {
    const auto output = CreateOutput();
    const TBytes sound = MakeSound(kSixteenBits, 100);
    for (int round = 0; round < 1000; ++round) {
        output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
        output->Write(sound.data(), sound.size());
        if (round % 3 == 0) output->Play(MakeKept(kSixteenBits, sound));
        if (round % 2 == 0) audio_.Step(100);
        if (round % 5 > 0) output->Close();
    }
    EXPECT_GE(GetPlayed().size(), sound.size() * 500);
}

} // namespace
} // namespace vorlund::test
