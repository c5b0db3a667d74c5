// Outputs that play streams.
#include "devices/audio/CallingStream.h"
#include "devices/audio/SteppedTest.h"

#include "support/Text.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/AudioOutput");
constexpr TFailure kWritePlaying{VRL_L("vorlund::CAudioOutput::Write"), kFile, 8,
                                 VRL_L("A stream is playing")};
constexpr TFailure kNoStream{VRL_L("vorlund::CAudioOutput::Play"), kFile, 10, VRL_L("stream is NULL")};
constexpr TFailure kBadStream{VRL_L("vorlund::CAudioOutput::Play"), kFile, 11,
                              VRL_L("Unsupported format in decoded stream")};

class AudioOutputPlay : public CSteppedTest {
protected:
    AudioOutputPlay() { output_->OpenOutput(kSixteenBits, kDefaultAudioLatency); }
    ~AudioOutputPlay() noexcept override = default;

    std::string GetStreamError() {
        wchar text[300];
        const std::uint32_t length = output_->GetStreamError(text, 300);
        EXPECT_EQ(length, wstring(text).size());
        return Narrow(text);
    }
    /// What the device has played, up to and without the silence behind it.
    TBytes GetSound(std::size_t frames) { return Part(GetPlayed(), 0, frames * 4); }

    CRefPtr<IAudioOutput> output_ = CreateOutput();
};

TEST_F(AudioOutputPlay, StreamsFollowWithoutAGap) {
    const TBytes written = MakeSound(kSixteenBits, 77);
    TBytes all = written;
    EXPECT_TRUE(output_->GetIdleEvent().GetState());
    output_->Write(written.data(), written.size());
    for (std::uint32_t seed = 2; seed < 40; ++seed) {
        const TBytes sound = MakeSound(kSixteenBits, seed * 37 % 400, seed);
        output_->Play(MakeKept(kSixteenBits, sound));
        all = Joined(all, sound);
    }
    EXPECT_FALSE(output_->GetIdleEvent().GetState());
    EXPECT_GT(output_->GetPlayingStreams(), 1u);
    audio_.Step(all.size() / 4 + 1000);
    EXPECT_EQ(GetPlayed(), Joined(all, Silence(kSixteenBits, 1000)));
    EXPECT_EQ(output_->GetPosition(), all.size() / 4);
    EXPECT_EQ(output_->GetPlayingStreams(), 0u);
    EXPECT_TRUE(output_->GetIdleEvent().GetState());
    EXPECT_EQ(output_->GetXruns(), 0u);
    EXPECT_EQ(GetStreamError(), "");
}

TEST_F(AudioOutputPlay, StreamsThatDeliverPartsOfFrames) {
    const TBytes sound = MakeSound(kSixteenBits, 1000);
    for (const std::uint64_t most : {1, 3, 7}) {
        const auto stream = MakeStream(kSixteenBits, Joined(sound, TBytes(3)));
        stream->maximumRead = most;
        output_->Play(Keep(stream));
    }
    audio_.Step(3000);
    EXPECT_EQ(GetPlayed(), Joined(Joined(sound, sound), sound));
}

TEST_F(AudioOutputPlay, FromWhereTheStreamIs) {
    const TBytes sound = MakeSound(kSixteenBits, 1000);
    const auto stream = MakeStream(kSixteenBits, sound);
    stream->position = 400;
    output_->Play(Keep(stream));
    audio_.Step(900);
    EXPECT_EQ(GetPlayed(), Part(sound, 400, 4000));
    // Again, after a jump.
    output_->Flush();
    stream->position = 2000;
    output_->Play(stream.Get());
    audio_.Step(500);
    EXPECT_EQ(Part(GetPlayed(), 3600, 5600), Part(sound, 2000, 4000));
}

TEST_F(AudioOutputPlay, FlushDropsStreams) {
    const auto stream = MakeStream(kSixteenBits, MakeSound(kSixteenBits, 100000));
    output_->Play(Keep(stream));
    output_->Play(MakeKept(kSixteenBits, MakeSound(kSixteenBits, 100)));
    audio_.Step(1000);
    output_->Flush();
    EXPECT_EQ(output_->GetPlayingStreams(), 0u);
    EXPECT_TRUE(output_->GetIdleEvent().GetState());
    // The output has let go of it.
    EXPECT_EQ(stream->AddRef(), 3);
    EXPECT_EQ(stream->Release(), 2);
    audio_.Step(100);
    EXPECT_EQ(output_->GetPosition(), 1000u);
    EXPECT_EQ(output_->GetXruns(), 0u);
    const TBytes played = GetPlayed();
    EXPECT_EQ(Part(played, 4000, played.size()), Silence(kSixteenBits, 100));
}

TEST_F(AudioOutputPlay, NothingIsWrittenMeanwhile) {
    const TBytes sound = MakeSound(kSixteenBits, 1000);
    output_->Play(MakeKept(kSixteenBits, sound));
    EXPECT_EQ(output_->GetWritable(), 0u);
    ExpectRaises<CInvalidStateException>(kWritePlaying, [&] { output_->Write(sound.data(), 4); });
    audio_.Step(700);
    EXPECT_EQ(output_->GetPlayingStreams(), 0u);
    output_->Write(sound.data(), 400);
    audio_.Step(400);
    EXPECT_EQ(GetPlayed(), Joined(sound, Part(sound, 0, 400)));
}

TEST_F(AudioOutputPlay, AStreamThatRaisesEndsThere) {
    const TBytes sound = MakeSound(kSixteenBits, 1000);
    const TBytes next = MakeSound(kSixteenBits, 100, 2);
    struct TRow {
        std::function<void()> fail;
        const char* text;
    };
    const TRow rows[] = {{nullptr, "Exception: type=CIOException | method=test::CFaultyInputStream::Read | "
                                   "file=tests/support/Streams | line=4 | reason=Cannot read"},
                         {[] { throw std::runtime_error("out of order"); }, "out of order"},
                         {[] { throw 7; }, "Unknown exception"}};
    TBytes all;
    for (const TRow& row : rows) {
        const auto stream = MakeStream(kSixteenBits, sound);
        stream->failAt = 800;
        if (row.fail) stream->fail = row.fail;
        output_->Play(Keep(stream));
        output_->Play(MakeKept(kSixteenBits, next));
        audio_.Step(300);
        EXPECT_EQ(GetStreamError(), row.text);
        all = Joined(Joined(all, Part(sound, 0, 800)), next);
    }
    EXPECT_EQ(GetPlayed(), all);
    wchar few[4];
    EXPECT_EQ(output_->GetStreamError(few, 4), 17u);
    EXPECT_EQ(Narrow(few), "Unk");
    EXPECT_EQ(output_->GetStreamError(nullptr, 0), 17u);
    EXPECT_EQ(output_->GetStreamError(few, 0), 17u);
    EXPECT_EQ(Narrow(few), "Unk");
    output_->Close();
    EXPECT_EQ(output_->GetStreamError(few, 4), 17u);
    output_->Open();
    EXPECT_EQ(output_->GetStreamError(few, 4), 0u);
}

TEST_F(AudioOutputPlay, AStreamMayCallTheOutput) {
    const TBytes sound = MakeSound(kSixteenBits, 2000);
    const TBytes next = MakeSound(kSixteenBits, 500, 2);
    const auto stream = Make<CCallingStream>();
    stream->bytes = sound;
    stream->format = kSixteenBits;
    IInputStream* const second = MakeKept(kSixteenBits, next);
    int calls = 0;
    stream->call = [&] {
        output_->GetPosition();
        output_->GetDelay();
        output_->SetVolume(1);
        EXPECT_FALSE(output_->Drain());
        if (++calls == 3) output_->Play(second);
    };
    output_->Play(Keep(stream));
    audio_.Step(2500);
    EXPECT_GE(calls, 3);
    EXPECT_EQ(GetPlayed(), Joined(sound, next));
    stream->call = nullptr;
}

TEST_F(AudioOutputPlay, AStreamMayFlushAndCloseTheOutput) {
    const TBytes sound = MakeSound(kSixteenBits, 5000);
    const TBytes next = MakeSound(kSixteenBits, 100, 2);
    IInputStream* const second = MakeKept(kSixteenBits, next);
    const auto stream = Make<CCallingStream>();
    stream->bytes = sound;
    stream->format = kSixteenBits;
    CEvent closed;
    bool isDone = false;
    stream->call = [&] {
        if (stream->position < 4000 || std::exchange(isDone, true)) return;
        output_->Flush();
        output_->Play(second);
    };
    output_->Play(Keep(stream));
    audio_.Step(3000);
    EXPECT_EQ(output_->GetPlayingStreams(), 0u);
    TBytes played = GetPlayed();
    const auto end = std::search(played.begin(), played.end(), next.begin(), next.end());
    EXPECT_NE(end, played.end());
    EXPECT_TRUE(std::equal(played.begin(), end, sound.begin(), sound.begin() + (end - played.begin())));

    stream->position = 0;
    isDone = false;
    stream->call = [&] {
        if (std::exchange(isDone, true)) return;
        output_->Close();
        closed.SetState(true);
    };
    output_->Play(stream.Get());
    closed.Wait();
    EXPECT_EQ(output_->GetState(), AUDIO_STATE_CLOSED);
    output_->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    EXPECT_EQ(output_->GetPlayingStreams(), 0u);
}

TEST_F(AudioOutputPlay, AStreamMayReleaseTheOutput) {
    CEvent isAlone, isGone;
    {
        const auto stream = Make<CCallingStream>();
        stream->bytes = MakeSound(kSixteenBits, 1000);
        stream->format = kSixteenBits;
        const std::shared_ptr<void> end(nullptr, [&](void*) { isGone.SetState(true); });
        stream->call = [&, end] {
            isAlone.Wait();
            output_.Reset();
        };
        output_->Play(stream.Get());
    }
    // The output alone counts its stream now.
    isAlone.SetState(true);
    isGone.Wait();
    // Another output gets the device as soon as that one has let go of it.
    output_ = CreateOutput();
    output_->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 100, 2);
    output_->Write(sound.data(), sound.size());
    audio_.Step(100);
    EXPECT_EQ(GetPlayed(), sound);
}

TEST_F(AudioOutputPlay, StreamsWithoutAnEnd) {
    const auto stream = Make<CCallingStream>();
    stream->bytes = MakeSound(kSixteenBits, 100);
    stream->format = kSixteenBits;
    stream->call = [&stream = *stream] { stream.position = stream.position % 400; };
    output_->Play(Keep(stream));
    audio_.Step(1000);
    TBytes all;
    for (int i = 0; i < 10; ++i) all = Joined(all, stream->bytes);
    EXPECT_EQ(GetPlayed(), all);
    output_->Close();
}

TEST_F(AudioOutputPlay, WhatIsNoSoundIsRefused) {
    ExpectRaises<CNullPtrException>(kNoStream, [&] { output_->Play(nullptr); });
    for (const TDataFormat_AudioPcm& format :
         {TDataFormat_AudioPcm(7, 2, 48000), TDataFormat_AudioPcm(1, 0, 48000),
          TDataFormat_AudioPcm(1, 9, 48000), TDataFormat_AudioPcm(1, 1, 0)})
        ExpectRaises<CDataFormatException>(kBadStream, [&] { output_->Play(MakeKept(format, TBytes(100))); });
    TDataFormat_AudioPcm longer = kSixteenBits;
    longer.size += 4;
    ExpectRaises<CDataFormatException>(kBadStream, [&] { output_->Play(MakeKept(longer, TBytes(100))); });
    EXPECT_EQ(output_->GetPlayingStreams(), 0u);
}

TEST_F(AudioOutputPlay, OtherSamplesAndChannelsAreConverted) {
    const TDataFormat_AudioPcm mono(SAMPLE_FORMAT_FLOAT, 1, 48000);
    const float floats[] = {0.5F, -0.25F, 1.5F, -2.0F};
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(floats);
    output_->Play(MakeKept(mono, TBytes(bytes, bytes + sizeof(floats))));
    audio_.Step(4);
    std::int16_t played[8];
    EXPECT_EQ(audio_.GetPlayed(VRL_L("a"), 0, played, sizeof(played)), sizeof(played));
    const std::int16_t expected[] = {16384, 16384, -8192, -8192, 32767, 32767, -32768, -32768};
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(played[i], expected[i]) << i;
}

TEST_F(AudioOutputPlay, ReleasesItsStreamsWithTheOutput) {
    const auto stream = MakeStream(kSixteenBits, MakeSound(kSixteenBits, 10000));
    output_->Play(stream.Get());
    output_.Reset();
    EXPECT_EQ(stream->AddRef(), 2);
    EXPECT_EQ(stream->Release(), 1);
}

} // namespace
} // namespace vorlund::test
