// Outputs and inputs at another rate than the device's.
#include "devices/audio/SteppedTest.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/Resampler.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace vorlund::test {
namespace {

constexpr TDataFormat_AudioPcm kDevice{SAMPLE_FORMAT_16BIT, 2, 48000};
constexpr TDataFormat_AudioPcm kSlow{SAMPLE_FORMAT_16BIT, 2, 44100};
constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/AudioOutput");
constexpr TFailure kNoResampler{VRL_L("vorlund::CAudioOutput::OpenOutput"), kFile, 4,
                                VRL_L("No resampler: the device plays at another rate")};
constexpr TFailure kNoPlayResampler{VRL_L("vorlund::CAudioOutput::Play"), kFile, 12,
                                    VRL_L("No resampler: the device plays at another rate")};

constexpr TFailure kNoInputResampler{VRL_L("vorlund::CAudioInput::OpenInput"),
                                     VRL_L("src/vorlund/devices/audio/AudioInput"), 4,
                                     VRL_L("No resampler: the device records at another rate")};

class AudioRates : public CSteppedRateTest {
protected:
    AudioRates() {
        audio_.SetDeviceFormat(VRL_L("a"), kDevice);
        output_ = CreateOutput();
    }
    ~AudioRates() noexcept override { output_.Reset(); }

    /// What the filters make of a whole sound.
    static TBytes Convert(const TDataFormat_AudioPcm& from, const TBytes& sound,
                          std::uint32_t rate = kDevice.samplesPerSec) {
        const auto resampler = CreateAs<IResampler>(kResamplerClassId);
        resampler->SetTarget(rate);
        const auto source = MakeStream(from, sound);
        resampler->Connect(source.Get());
        TAudioTarget target{.sampleFormat = kDevice.sampleFormat};
        if (from.channels != kDevice.channels) target.layout = GetDefaultLayout(kDevice.channels);
        target.mixLevel = MIX_LEVEL_SAFE;
        const auto converter = CRefPtr<IInputStreamFilter>::Adopt(CreateAudioConverter(target));
        converter->Connect(resampler.Get());
        TBytes bytes(static_cast<std::size_t>(converter->GetLength()));
        EXPECT_EQ(converter->Read(bytes.data(), bytes.size()), bytes.size());
        return bytes;
    }

    CRefPtr<IAudioOutput> output_;
};

TEST_F(AudioRates, StreamsBecomeWhatTheFiltersMakeOfThem) {
    output_->OpenOutput(kSlow, kDefaultAudioLatency);
    EXPECT_EQ(output_->GetFormat().samplesPerSec, 44100u);
    EXPECT_EQ(output_->GetDeviceFormat().samplesPerSec, 48000u);
    TBytes all;
    for (const TDataFormat_AudioPcm& format : {kSlow, TDataFormat_AudioPcm(SAMPLE_FORMAT_32BIT, 6, 96000),
                                               TDataFormat_AudioPcm(SAMPLE_FORMAT_8BIT, 1, 8000), kDevice}) {
        const TBytes sound = MakeSound(format, 5000);
        output_->Play(MakeKept(format, sound));
        all = Joined(all, format.samplesPerSec == 48000 ? sound : Convert(format, sound));
    }
    audio_.Step(all.size() / 4);
    EXPECT_EQ(GetPlayed(), all);
    EXPECT_EQ(output_->GetPosition(), GetResampledFrames(all.size() / 4, 48000, 44100));
    EXPECT_EQ(output_->GetPlayingStreams(), 0u);
}

TEST_F(AudioRates, WrittenFramesBecomeOneSound) {
    output_->OpenOutput(kSlow, 0.1);
    const TBytes sound = MakeSound(kSlow, 44100);
    const TBytes expected = Convert(kSlow, sound);
    std::atomic<bool> isDone = false;
    CActor writer;
    writer.Start([&] {
        for (std::size_t at = 0; at < sound.size(); at += 1260 * 4)
            EXPECT_EQ(output_->Write(sound.data() + at, 1260 * 4), 1260u * 4);
        EXPECT_TRUE(output_->Drain());
        isDone = true;
    });
    // Never so far that the writer could be too late, until it has written everything.
    std::uint64_t written = 0;
    while (!isDone) {
        written = std::max(written, output_->GetPosition() + output_->GetDelay());
        if (written >= 44100 || output_->GetDelay() > 6000)
            audio_.Step(128);
        else
            std::this_thread::yield();
    }
    EXPECT_TRUE(writer.Finishes());
    TBytes played = GetPlayed();
    ASSERT_GE(played.size(), expected.size());
    // The device has begun before the first frame was there.
    const auto begin = std::search(played.begin(), played.end(), expected.begin(), expected.begin() + 64);
    ASSERT_NE(begin, played.end());
    EXPECT_EQ(TBytes(begin, begin + static_cast<std::ptrdiff_t>(expected.size())), expected);
    EXPECT_EQ(output_->GetPosition(), 44100u);
    EXPECT_EQ(output_->GetDelay(), 0u);
}

TEST_F(AudioRates, FewFramesAreHeardWithoutMore) {
    output_->OpenOutput(kSlow, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSlow, 441);
    const TBytes expected = Convert(kSlow, sound);
    output_->Write(sound.data(), sound.size());
    EXPECT_EQ(output_->GetDelay(), 441u);
    audio_.Step(2000);
    EXPECT_EQ(output_->GetPosition(), 441u);
    EXPECT_EQ(output_->GetDelay(), 0u);
    const TBytes played = GetPlayed();
    const auto begin = std::search(played.begin(), played.end(), expected.begin(), expected.end());
    EXPECT_NE(begin, played.end());
    // And what follows is a sound of its own.
    output_->Write(sound.data(), sound.size());
    const TBytes next = MakeSound(kDevice, 100, 3);
    output_->Play(MakeKept(kDevice, next));
    audio_.Step(2000);
    const TBytes both = Joined(expected, next);
    const TBytes later = GetPlayed();
    EXPECT_NE(std::search(later.begin(), later.end(), both.begin(), both.end()), later.end());
}

TEST_F(AudioRates, APauseIsNotTheEndOfWhatWasWritten) {
    output_->OpenOutput(kSlow, kDefaultAudioLatency);
    output_->SetPaused(true);
    const TBytes sound = MakeSound(kSlow, 882);
    output_->Write(sound.data(), sound.size() / 2);
    audio_.Step(2000);
    EXPECT_EQ(output_->GetPosition(), 0u);
    EXPECT_EQ(output_->GetDelay(), 441u);
    // The rest belongs to the same sound, however late it comes.
    output_->Write(sound.data() + sound.size() / 2, sound.size() / 2);
    output_->SetPaused(false);
    audio_.Step(4000);
    EXPECT_EQ(output_->GetPosition(), 882u);
    const TBytes played = GetPlayed();
    const TBytes expected = Convert(kSlow, sound);
    EXPECT_NE(std::search(played.begin(), played.end(), expected.begin(), expected.end()), played.end());
}

TEST_F(AudioRates, FlushDropsWhatTheResamplerHas) {
    output_->OpenOutput(kSlow, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSlow, 8192);
    output_->Write(sound.data(), sound.size());
    audio_.Step(300);
    EXPECT_EQ(output_->GetPosition(), GetResampledFrames(300, 48000, 44100));
    output_->Flush();
    EXPECT_EQ(output_->GetDelay(), 0u);
    const std::size_t before = GetPlayed().size();
    const TBytes next = MakeSound(kSlow, 1000, 3);
    output_->Write(next.data(), next.size());
    audio_.Step(4000);
    const TBytes played = GetPlayed();
    const TBytes expected = Convert(kSlow, next);
    EXPECT_NE(std::search(played.begin() + static_cast<std::ptrdiff_t>(before), played.end(),
                          expected.begin(), expected.end()),
              played.end());
}

TEST_F(AudioRates, TheDefaultChangesItsRate) {
    audio_.SetDeviceFormat(VRL_L("b"), {SAMPLE_FORMAT_16BIT, 2, 24000});
    output_->OpenOutput(kDevice, kDefaultAudioLatency);
    const TBytes sound = Silence(kDevice, 10000);
    output_->Play(MakeKept(kDevice, sound));
    audio_.SetDefaultAt(4000, VRL_L("b"));
    audio_.Step(4000);
    EXPECT_EQ(output_->GetPosition(), 4000u);
    EXPECT_EQ(output_->GetDeviceFormat().samplesPerSec, 24000u);
    // Half as many frames of the slower device.
    audio_.Step(6000);
    EXPECT_NEAR(static_cast<double>(output_->GetPosition()), 10000, 2);
    EXPECT_EQ(audio_.GetPlayedSize(VRL_L("b")), 3000u * 4);
    const TBytes written = Silence(kDevice, 2400);
    output_->Write(written.data(), written.size());
    audio_.Step(20000);
    EXPECT_NEAR(static_cast<double>(output_->GetPosition()), 12400, 4);
}

TEST_F(AudioRates, WhatWasWrittenGoesFromDeviceToDevice) {
    audio_.SetDeviceFormat(VRL_L("b"), {SAMPLE_FORMAT_16BIT, 2, 24000});
    output_->OpenOutput(kSlow, kDefaultAudioLatency);
    const TBytes sound = Silence(kSlow, 4000);
    output_->Write(sound.data(), sound.size());
    audio_.SetDefaultAt(300, VRL_L("b"));
    // The other one has not yet heard what the first one has left.
    audio_.SetDefaultAt(310, VRL_L("a"));
    audio_.Step(20000);
    EXPECT_EQ(output_->GetState(), AUDIO_STATE_RUNNING);
    EXPECT_NEAR(static_cast<double>(output_->GetPosition()), 4000, 4);
    EXPECT_EQ(output_->GetDelay(), 0u);
    output_->Write(sound.data(), sound.size());
    audio_.Step(20000);
    EXPECT_NEAR(static_cast<double>(output_->GetPosition()), 8000, 8);
}

TEST_F(AudioRates, InputsAreHeardAtTheirRate) {
    const TBytes sound = MakeSound(kDevice, 24000);
    const TBytes expected = Convert(kDevice, sound, kSlow.samplesPerSec);
    for (const bool isLost : {false, true}) {
        audio_.SetInput(VRL_L("a"), sound.data(), sound.size());
        const auto input = CreateInput(VRL_L("a"));
        input->OpenInput(kSlow, kDefaultAudioLatency);
        EXPECT_EQ(input->GetDeviceFormat().samplesPerSec, 48000u);
        const auto stream = CRefPtr<IInputStream>::Adopt(input->GetStream());
        audio_.Step(12000);
        audio_.Step(12000);
        isLost ? audio_.LoseAt(0, VRL_L("a")) : input->Stop();
        TBytes heard(2 * expected.size());
        heard.resize(static_cast<std::size_t>(stream->Read(heard.data(), heard.size())));
        EXPECT_EQ(heard, expected);
        EXPECT_TRUE(stream->Eof());
        EXPECT_EQ(input->GetXruns(), 0u);
    }
}

TEST_F(AudioRates, InputsNeedThePluginToo) {
    store_.Close();
    v.GetClassStore().Clear();
    const auto input = CreateInput(VRL_L("a"));
    ExpectRaises<CFailedException>(kNoInputResampler, [&] { input->OpenInput(kSlow, kDefaultAudioLatency); });
    EXPECT_EQ(input->GetState(), AUDIO_STATE_CLOSED);
}

TEST_F(AudioRates, ThePluginMayBeMissing) {
    output_->OpenOutput(kDevice, kDefaultAudioLatency);
    store_.Close();
    v.GetClassStore().Clear();
    ExpectRaises<CFailedException>(kNoPlayResampler, [&] { output_->Play(MakeKept(kSlow, TBytes(400))); });
    ExpectRaises<CFailedException>(kNoResampler, [&] { output_->OpenOutput(kSlow, kDefaultAudioLatency); });
    EXPECT_EQ(output_->GetState(), AUDIO_STATE_CLOSED);
    // No lock was left behind.
    EXPECT_EQ(v.GiveBackLocks(), 0);
}

} // namespace
} // namespace vorlund::test
