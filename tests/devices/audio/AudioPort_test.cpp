// Outputs and inputs over a port of the application.
#include "devices/audio/AudioTest.h"
#include "devices/audio/CalledPort.h"

#include "support/LibraryScope.h"
#include "support/Text.h"

#include <vorlund/StreamErrors.h>

#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

constexpr TFailure kOutputFormat{VRL_L("vorlund::CAudioOutput::OpenOutput"),
                                 VRL_L("src/vorlund/devices/audio/AudioOutput"), 3,
                                 VRL_L("Device has an impossible format")};
constexpr TFailure kInputFormat{VRL_L("vorlund::CAudioInput::OpenInput"),
                                VRL_L("src/vorlund/devices/audio/AudioInput"), 3,
                                VRL_L("Device has an impossible format")};
constexpr TFailure kRefused{VRL_L("test::CCalledPort::Start"), VRL_L("tests"), 1, VRL_L("Refused")};

class AudioPort : public testing::Test {
protected:
    AudioPort() = default;
    ~AudioPort() noexcept override = default;

    TBytes Take(std::uint32_t frames) {
        TBytes bytes(frames * kSixteenBits.GetBlockSize());
        port_->client->Process(bytes.data(), frames);
        return bytes;
    }

    CLibraryScope library_;
    const CRefPtr<CCalledPort> port_ = Make<CCalledPort>();
};

TEST_F(AudioPort, MayWantAnyNumberOfFrames) {
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateAudioOutput(port_.Get()));
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 512);
    for (int round = 0; round < 50; ++round) {
        output->Write(sound.data(), sound.size());
        TBytes taken;
        for (const std::uint32_t frames : {1u, 7u, 200u, 0u, 303u, 1u}) taken = Joined(taken, Take(frames));
        EXPECT_EQ(taken, sound);
    }
    EXPECT_EQ(output->GetXruns(), 0u);
    EXPECT_EQ(Take(1000), TBytes(4000));
    EXPECT_EQ(output->GetXruns(), 1u);
    port_->client->NoteXruns(3);
    EXPECT_EQ(output->GetXruns(), 4u);
}

TEST_F(AudioPort, PositionsAreWhatTheDeviceHasPlayed) {
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateAudioOutput(port_.Get()));
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 512);
    Take(100);
    output->Write(sound.data(), sound.size());
    port_->delay = 250;
    EXPECT_EQ(output->GetPosition(), 0u);
    Take(200);
    EXPECT_EQ(output->GetPosition(), 0u);
    EXPECT_EQ(output->GetDelay(), 512u);
    port_->delay = 150;
    EXPECT_EQ(output->GetPosition(), 50u);
    Take(312);
    port_->delay = 100;
    EXPECT_EQ(output->GetPosition(), 412u);
    // Of these 150 frames, 50 are silence.
    Take(50);
    port_->delay = 150;
    EXPECT_EQ(output->GetPosition(), 412u);
    // It never goes back.
    port_->delay = 400;
    EXPECT_EQ(output->GetPosition(), 412u);
    port_->delay = 0;
    EXPECT_EQ(output->GetPosition(), 512u);
    EXPECT_EQ(output->GetDelay(), 0u);
}

TEST_F(AudioPort, ImpossibleFormatsOfDevicesAreRefused) {
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateAudioOutput(port_.Get()));
    const auto input = CRefPtr<IAudioInput>::Adopt(CreateAudioInput(port_.Get()));
    const std::vector<std::function<void(TAudioPortFormat&)>> changes{
        [](TAudioPortFormat& format) { format.channels = 9; },
        [](TAudioPortFormat& format) { format.channels = 0; },
        [](TAudioPortFormat& format) { format.sampleFormat = 4; },
        [](TAudioPortFormat& format) { format.samplesPerSec = 0; },
        [](TAudioPortFormat& format) { format.periodFrames = 0; }};
    for (const auto& change : changes) {
        port_->change = change;
        ExpectRaises<CFailedException>(kOutputFormat, [&] { output->Open(); });
        ExpectRaises<CFailedException>(kInputFormat, [&] { input->Open(); });
        EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
    }
    EXPECT_EQ(port_->closings, static_cast<int>(2 * changes.size()));
}

TEST_F(AudioPort, WhatStartRaisesPassesOn) {
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateAudioOutput(port_.Get()));
    const auto input = CRefPtr<IAudioInput>::Adopt(CreateAudioInput(port_.Get()));
    port_->start = [] { Raise<CFailedException>(kRefused); };
    ExpectRaises<CFailedException>(kRefused, [&] { output->Open(); });
    ExpectRaises<CFailedException>(kRefused, [&] { input->Open(); });
    EXPECT_EQ(port_->client, nullptr);
    port_->start = nullptr;
    output->Open();
    EXPECT_EQ(output->GetState(), AUDIO_STATE_RUNNING);
}

TEST_F(AudioPort, ALostDeviceIsOpenedAgain) {
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateAudioOutput(port_.Get(), true));
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 300);
    output->Write(sound.data(), sound.size());
    const TBytes first = Take(100);
    port_->client->NoteLost();
    while (output->GetState() != AUDIO_STATE_RUNNING || port_->openings < 2) std::this_thread::yield();
    EXPECT_EQ(Joined(first, Take(200)), sound);
    EXPECT_EQ(output->GetPosition(), 300u);
}

TEST_F(AudioPort, XrunsOfAnInputStayBehindIt) {
    const auto input = CRefPtr<IAudioInput>::Adopt(CreateAudioInput(port_.Get()));
    input->OpenInput(kSixteenBits, kDefaultAudioLatency);
    port_->client->NoteXruns(2);
    EXPECT_EQ(input->GetXruns(), 2u);
    input->Close();
    EXPECT_EQ(input->GetXruns(), 2u);
    input->OpenInput(kSixteenBits, kDefaultAudioLatency);
    EXPECT_EQ(input->GetXruns(), 0u);
}

TEST_F(AudioPort, AnInputThatIsLostCannotBePlayed) {
    const auto input = CRefPtr<IAudioInput>::Adopt(CreateAudioInput(port_.Get()));
    input->OpenInput(kSixteenBits, kDefaultAudioLatency);
    const auto port = Make<CCalledPort>();
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateAudioOutput(port.Get()));
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const auto recorded = CRefPtr<IInputStream>::Adopt(input->GetStream());
    output->Play(recorded.Get());
    Take(100);
    port_->client->NoteLost();
    while (output->GetPlayingStreams() > 0) std::this_thread::yield();
    wchar text[300];
    output->GetStreamError(text, 300);
    EXPECT_EQ(Narrow(text),
              "Exception: type=CIOException | method=vorlund::CAudioOutput::Play | "
              "file=src/vorlund/devices/audio/AudioOutput | line=27 | reason=Stream cannot be read");
    EXPECT_EQ(output->GetDelay(), 100u);
}

} // namespace
} // namespace vorlund::test
