// Outputs and inputs whose device was lost and does not come back at once.
#include "devices/audio/AudioTest.h"
#include "devices/audio/CalledPort.h"
#include "devices/audio/CallingStream.h"

#include "support/Actor.h"
#include "support/LibraryScope.h"

#include <vorlund/Event.h>

#include <functional>
#include <thread>
#include <utility>

namespace vorlund::test {
namespace {

constexpr TFailure kOpenRefused{VRL_L("test::CCalledPort::Open"), VRL_L("tests"), 2, VRL_L("Refused")};
constexpr TFailure kStartRefused{VRL_L("test::CCalledPort::Start"), VRL_L("tests"), 3, VRL_L("Refused")};
constexpr TFailure kCloseRefused{VRL_L("test::CCalledPort::Close"), VRL_L("tests"), 4, VRL_L("Refused")};

/// After the first opening, a port that is refused, is impossible, has a rate for which there is no
/// resampler, and cannot be started; then it works.
void RefuseFourTimes(CCalledPort& port) {
    port.change = [&port](TAudioPortFormat& format) {
        const int opening = port.openings;
        if (opening == 2) Raise<CFailedException>(kOpenRefused);
        if (opening == 3) format.channels = 0;
        if (opening == 4) format.samplesPerSec *= 2;
    };
    port.start = [&port] {
        if (port.openings == 5) Raise<CFailedException>(kStartRefused);
    };
}

class AudioReopening : public testing::Test {
protected:
    AudioReopening() = default;
    ~AudioReopening() noexcept override = default;

    CLibraryScope library_;
    const CRefPtr<CCalledPort> port_ = Make<CCalledPort>();
};

TEST_F(AudioReopening, IsTriedUntilItWorks) {
    const auto inputPort = Make<CCalledPort>();
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateAudioOutput(port_.Get(), true));
    const auto input = CRefPtr<IAudioInput>::Adopt(CreateAudioInput(inputPort.Get(), true));
    RefuseFourTimes(*port_);
    RefuseFourTimes(*inputPort);
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    input->OpenInput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 300);
    output->Write(sound.data(), sound.size());
    TBytes played(400);
    port_->client->Process(played.data(), 100);
    TBytes heard = MakeSound(kSixteenBits, 50, 2);
    inputPort->client->Process(heard.data(), 50);
    port_->client->NoteLost();
    inputPort->client->NoteLost();
    while (port_->openings < 6 || inputPort->openings < 6 || output->GetState() != AUDIO_STATE_RUNNING ||
           input->GetState() != AUDIO_STATE_RUNNING)
        std::this_thread::yield();

    // Nothing was lost meanwhile.
    played.resize(sound.size());
    port_->client->Process(played.data() + 400, 200);
    EXPECT_EQ(played, sound);
    EXPECT_EQ(output->GetPosition(), 300u);
    TBytes more = MakeSound(kSixteenBits, 50, 3);
    inputPort->client->Process(more.data(), 50);
    const auto stream = CRefPtr<IInputStream>::Adopt(input->GetStream());
    TBytes read(400);
    EXPECT_EQ(stream->Read(read.data(), read.size()), read.size());
    EXPECT_EQ(read, Joined(heard, more));
    output->Close();
    input->Close();
}

TEST_F(AudioReopening, MayBeClosedMeanwhile) {
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateAudioOutput(port_.Get(), true));
    CActor drainer, closer;
    port_->change = [&](TAudioPortFormat&) {
        if (port_->openings != 2) return;
        closer.Start([&] { output->Close(); });
        // It has ended the session as soon as it has ended this.
        EXPECT_TRUE(drainer.Finishes());
    };
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 300);
    output->Write(sound.data(), sound.size());
    drainer.Start([&] { EXPECT_FALSE(output->Drain()); });
    EXPECT_TRUE(drainer.StaysBusy());
    port_->client->NoteLost();
    EXPECT_TRUE(drainer.Finishes());
    EXPECT_TRUE(closer.Finishes());
    EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
    EXPECT_EQ(port_->client, nullptr);
    EXPECT_EQ(port_->openings, 2);
    EXPECT_EQ(port_->closings, 2);
}

TEST_F(AudioReopening, WhatCloseRaisesReachesAStreamThatCloses) {
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateAudioOutput(port_.Get()));
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    port_->close = [] { Raise<CFailedException>(kCloseRefused); };
    const auto stream = Make<CCallingStream>();
    stream->bytes = MakeSound(kSixteenBits, 1000);
    stream->format = kSixteenBits;
    CEvent closed;
    bool isDone = false;
    stream->call = [&] {
        if (std::exchange(isDone, true)) return;
        ExpectRaises<CFailedException>(kCloseRefused, [&] { output->Close(); });
        closed.SetState(true);
    };
    output->Play(stream.Get());
    closed.Wait();
    EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
    // Until the stream was given back.
    output->GetIdleEvent().Wait();
    port_->close = nullptr;
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_RUNNING);
    output->Close();
}

TEST_F(AudioReopening, WhatCloseRaisesStaysInADestructor) {
    port_->close = [] { Raise<CFailedException>(kCloseRefused); };
    {
        const auto output = CRefPtr<IAudioOutput>::Adopt(CreateAudioOutput(port_.Get()));
        output->Open();
    }
    EXPECT_EQ(port_->closings, 1);
    {
        const auto input = CRefPtr<IAudioInput>::Adopt(CreateAudioInput(port_.Get()));
        input->Open();
    }
    EXPECT_EQ(port_->closings, 2);
    EXPECT_EQ(port_->client, nullptr);
}

} // namespace
} // namespace vorlund::test
