// Peaks, mean levels, offsets, silences and clipping, and what the meter refuses.
#include "plugins/measure/MeterTest.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace vorlund::test {
namespace {

class AudioMeter : public CMeterTest {};

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST_F(AudioMeter, LevelsOfASine) {
    std::vector<float> samples;
    AppendSine(samples, {0, -6}, 10);
    const TAudioLevels levels = Measure(samples);
    EXPECT_EQ(levels.frames, 480000u);
    EXPECT_NEAR(levels.peak, 1, 1e-6);
    EXPECT_EQ(levels.peakFrame, 12u);
    EXPECT_NEAR(ToDecibels(levels.rms), -3.01 + 10 * std::log10((1 + std::pow(10, -0.6)) / 2), 0.01);
    EXPECT_EQ(levels.notFinite, 0u);
    EXPECT_EQ(levels.silentFrames, 0u);
    const TChannelLevels left = meter_->GetChannelLevels(0);
    const TChannelLevels right = meter_->GetChannelLevels(1);
    EXPECT_NEAR(ToDecibels(left.rms), -3.01, 0.01);
    EXPECT_NEAR(ToDecibels(right.rms), -9.01, 0.01);
    EXPECT_NEAR(ToDecibels(right.peak), -6, 0.01);
    EXPECT_NEAR(left.dc, 0, 1e-9);
}

TEST_F(AudioMeter, Offset) {
    std::vector<float> samples;
    AppendSine(samples, {-20, -20}, 1);
    for (std::size_t i = 1; i < samples.size(); i += 2) samples[i] -= 0.25F;
    Measure(samples);
    EXPECT_NEAR(meter_->GetChannelLevels(0).dc, 0, 1e-8);
    EXPECT_NEAR(meter_->GetChannelLevels(1).dc, -0.25, 1e-7);
}

TEST_F(AudioMeter, ClippedRunsOfAnyChannelTouchAndAreOne) {
    std::vector<float> samples(2 * 100, 0.1F);
    const auto put = [&](std::size_t channel, std::size_t first, std::size_t count, float sample) {
        for (std::size_t i = first; i < first + count; ++i) samples[2 * i + channel] = sample;
    };
    put(0, 10, 3, 1);
    // Two are not enough.
    put(1, 20, 2, -1);
    put(0, 30, 5, -1);
    put(1, 33, 4, 1.5F);
    put(0, 97, 3, 32767.0F / 32768);
    EXPECT_EQ(Measure(samples).clippedSamples, 15u);
    EXPECT_EQ(meter_->GetChannelLevels(0).clippedSamples, 11u);
    EXPECT_EQ(meter_->GetChannelLevels(1).clippedSamples, 4u);
    const auto ranges = GetRanges(AUDIO_FINDING_CLIPPING);
    ASSERT_EQ(ranges.size(), 3u);
    EXPECT_EQ(ranges[0].first, 10u);
    EXPECT_EQ(ranges[0].count, 3u);
    EXPECT_EQ(ranges[1].first, 30u);
    EXPECT_EQ(ranges[1].count, 7u);
    EXPECT_EQ(ranges[2].first, 97u);
    EXPECT_EQ(ranges[2].count, 3u);
    EXPECT_DOUBLE_EQ(meter_->GetLevels().peak, 1.5);
    EXPECT_EQ(meter_->GetLevels().peakFrame, 33u);

    // With limits of one's own.
    EXPECT_EQ(Measure(samples, {.clippedRun = 1}).clippedSamples, 17u);
    EXPECT_EQ(Measure(samples, {.fullScale = 1.2F}).clippedSamples, 4u);
}

TEST_F(AudioMeter, Silences) {
    std::vector<float> samples;
    const auto append = [&](std::size_t frames, float left, float right) {
        for (; frames > 0; --frames) samples.insert(samples.end(), {left, right});
    };
    append(4000, 0, 0.0005F);
    append(100, 0, 0.5F);
    append(3999, 0, 0);
    append(1, 0.5F, 0);
    append(5000, -0.001F, 0.001F);
    const TAudioLevels levels = Measure(samples, {.samplesPerSec = 8000});
    EXPECT_EQ(levels.silentFrames, 9000u);
    const auto ranges = GetRanges(AUDIO_FINDING_SILENCE);
    ASSERT_EQ(ranges.size(), 2u);
    EXPECT_EQ(ranges[0].first, 0u);
    EXPECT_EQ(ranges[0].count, 4000u);
    EXPECT_EQ(ranges[1].first, 8100u);
    EXPECT_EQ(ranges[1].count, 5000u);
    // A silence goes on with the next frames.
    meter_->Write(samples.data(), 1);
    EXPECT_EQ(GetRanges(AUDIO_FINDING_SILENCE).at(1).count, 5001u);
    EXPECT_EQ(Measure(samples, {.samplesPerSec = 8000, .silentRun = 3999}).silentFrames, 12999u);
    EXPECT_EQ(Measure(samples, {.samplesPerSec = 8000, .silence = 0}).silentFrames, 0u);
}

TEST_F(AudioMeter, RangesAreCountedBeyondThoseThatAreKept) {
    std::vector<float> samples(4000, 0.1F);
    for (std::size_t i = 0; i < samples.size(); i += 2) samples[i] = 1;
    const TAudioLevels levels = Measure(samples, {.channels = 1, .clippedRun = 1});
    EXPECT_EQ(levels.clippedSamples, 2000u);
    std::vector<TFrameRange> ranges(2 * IAudioMeter::kMaxRanges, {7, 7});
    ASSERT_EQ(meter_->GetRanges(AUDIO_FINDING_CLIPPING, ranges.data(), ranges.size()),
              IAudioMeter::kMaxRanges);
    EXPECT_EQ(ranges[999].first, 1998u);
    EXPECT_EQ(ranges[1000].first, 7u);
    // Less room than there are ranges.
    ranges.assign(ranges.size(), {7, 7});
    EXPECT_EQ(meter_->GetRanges(AUDIO_FINDING_CLIPPING, ranges.data(), 2), IAudioMeter::kMaxRanges);
    EXPECT_EQ(ranges[1].first, 2u);
    EXPECT_EQ(ranges[2].first, 7u);
    EXPECT_EQ(meter_->GetRanges(AUDIO_FINDING_CLIPPING, nullptr, 0), IAudioMeter::kMaxRanges);
}

TEST_F(AudioMeter, AnyDivisionOfTheFramesGivesTheSame) {
    std::mt19937 random(1);
    std::vector<float> samples(3 * 100000);
    for (float& sample : samples) sample = static_cast<float>(random() % 65536) / 32768 - 1;
    std::fill_n(samples.begin() + 60000, 90000, 0.0F);
    std::fill_n(samples.begin() + 240000, 300, 1.0F);
    const TAudioMeterSettings settings{.samplesPerSec = 22050, .channels = 3};
    const TAudioLevels whole = Measure(samples, settings);
    const TChannelLevels channel = meter_->GetChannelLevels(2);
    const auto silences = GetRanges(AUDIO_FINDING_SILENCE);
    ASSERT_EQ(silences.size(), 1u);
    EXPECT_GT(whole.clippedSamples, 300u - 3);
    for (const unsigned longest : {1U, 10U, 3000U, 60000U}) {
        meter_->Start(settings);
        for (std::size_t done = 0; done < 100000;) {
            const std::size_t count =
                std::min<std::size_t>(100000 - done, longest == 1 ? 1 : random() % longest);
            meter_->Write(&samples[3 * std::min<std::size_t>(done, 99999)], count);
            done += count;
        }
        const TAudioLevels levels = meter_->GetLevels();
        EXPECT_EQ(std::memcmp(&levels, &whole, sizeof levels), 0) << longest;
        const TChannelLevels other = meter_->GetChannelLevels(2);
        EXPECT_EQ(std::memcmp(&other, &channel, sizeof other), 0) << longest;
        EXPECT_EQ(GetRanges(AUDIO_FINDING_SILENCE).size(), 1u);
    }
}

TEST_F(AudioMeter, SamplesThatAreNoNumbersAreCountedAndSilent) {
    std::vector<float> samples(2000, 0.5F);
    samples[10] = kNan;
    samples[11] = kInfinity;
    samples[1500] = -kInfinity;
    const TAudioLevels levels = Measure(samples, {.channels = 1});
    EXPECT_EQ(levels.notFinite, 3u);
    EXPECT_EQ(levels.peak, 0.5);
    EXPECT_NEAR(levels.rms, 0.5, 0.001);
    EXPECT_TRUE(std::isfinite(levels.truePeak));
    EXPECT_TRUE(std::isfinite(meter_->GetChannelLevels(0).dc));
}

TEST_F(AudioMeter, NothingMeasuredIsZero) {
    const TAudioLevels levels = Measure({});
    EXPECT_EQ(levels.frames, 0u);
    EXPECT_EQ(levels.peak, 0);
    EXPECT_EQ(levels.truePeak, 0);
    EXPECT_EQ(levels.rms, 0);
    EXPECT_TRUE(std::isinf(ToDecibels(levels.peak)));
    EXPECT_EQ(meter_->GetChannelLevels(0).dc, 0);
    EXPECT_TRUE(GetRanges(AUDIO_FINDING_SILENCE).empty());
    meter_->Write(nullptr, 0);
}

TEST_F(AudioMeter, ExtremeSettings) {
    for (const auto& [rate, channels] : {std::pair{16U, 1U}, {16U, 64U}, {1'000'000U, 4U}, {65536U, 64U}}) {
        const std::vector<float> samples(std::size_t{channels} * 5000, 0.25F);
        const TAudioLevels levels = Measure(samples, {.samplesPerSec = rate, .channels = channels});
        EXPECT_EQ(levels.frames, 5000u);
        EXPECT_EQ(levels.peak, 0.25);
    }
}

/// Type, reason, and the number that stands for the line.
template <class TException, class TAct> void ExpectRefusal(int line, const char* reason, TAct act) {
    try {
        act();
        ADD_FAILURE() << "not refused: " << reason;
    } catch (const TException& error) {
        EXPECT_EQ(error.GetLine(), line);
        const wstring text = error.GetReason();
        EXPECT_EQ(std::string(text.begin(), text.end()), reason);
        EXPECT_EQ(wstring(error.GetFile()), VRL_L("plugins/measure/AudioMeter"));
    }
}

TEST_F(AudioMeter, WhatIsOutOfRangeIsRefused) {
    ExpectRefusal<CBugException>(4, "Not started", [&] { meter_->Write(nullptr, 0); });
    ExpectRefusal<CBugException>(4, "Not started", [&] { meter_->GetLevels(); });
    ExpectRefusal<CBugException>(4, "Not started", [&] { meter_->GetChannelLevels(0); });
    ExpectRefusal<CBugException>(4, "Not started",
                                 [&] { meter_->GetRanges(AUDIO_FINDING_SILENCE, nullptr, 0); });
    for (const std::uint32_t rate : {0U, 15U, 1'000'001U, ~0U}) {
        ExpectRefusal<CInvalidParameterException>(1, "Sample rate out of range",
                                                  [&] { meter_->Start({.samplesPerSec = rate}); });
    }
    for (const std::uint32_t channels : {0U, 65U, ~0U}) {
        ExpectRefusal<CInvalidParameterException>(2, "Number of channels out of range",
                                                  [&] { meter_->Start({.channels = channels}); });
    }
    for (const auto& [rate, channels] : {std::pair{1'000'000U, 5U}, {65537U, 64U}}) {
        ExpectRefusal<CInvalidParameterException>(2, "Number of channels out of range", [&] {
            meter_->Start({.samplesPerSec = rate, .channels = channels});
        });
    }
    for (const TAudioMeterSettings& settings :
         {TAudioMeterSettings{.fullScale = 0}, TAudioMeterSettings{.fullScale = kNan},
          TAudioMeterSettings{.clippedRun = 0}, TAudioMeterSettings{.silence = -1},
          TAudioMeterSettings{.silence = kNan}}) {
        ExpectRefusal<CInvalidParameterException>(3, "Limit out of range", [&] { meter_->Start(settings); });
    }
    // Settings that are refused leave it as it was.
    ExpectRefusal<CBugException>(4, "Not started", [&] { meter_->GetLevels(); });
    meter_->Start({});
    ExpectRefusal<CNullPtrException>(5, "samples is NULL", [&] { meter_->Write(nullptr, 1); });
    ExpectRefusal<CInvalidParameterException>(6, "No such channel", [&] { meter_->GetChannelLevels(2); });
    ExpectRefusal<CInvalidParameterException>(
        7, "No such finding", [&] { meter_->GetRanges(static_cast<TAudioFinding>(3), nullptr, 0); });
    ExpectRefusal<CNullPtrException>(8, "ranges is NULL",
                                     [&] { meter_->GetRanges(AUDIO_FINDING_CLIPPING, nullptr, 1); });
}

} // namespace
} // namespace vorlund::test
