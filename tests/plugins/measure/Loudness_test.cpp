// The meter against the signals of EBU Tech 3341 and 3342, and against the meter of ffmpeg.
#include "plugins/measure/MeterTest.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

class Loudness : public CMeterTest {};

/// A part of a signal: the level of each channel, and for how long.
struct TPart {
    std::vector<double> decibels;
    double seconds;
};
struct TSignal {
    const char* name;
    std::uint32_t channels;
    std::vector<TPart> parts;
    double expected;
};

std::vector<float> Synthesise(const TSignal& signal, std::uint32_t rate) {
    std::vector<float> samples;
    std::size_t frame = 0;
    for (const TPart& part : signal.parts) {
        const auto frames = static_cast<std::size_t>(std::lround(part.seconds * rate));
        for (const std::size_t end = frame + frames; frame < end; ++frame) {
            const double sine = std::sin(2 * std::numbers::pi * 1000 * static_cast<double>(frame) / rate);
            for (std::uint32_t i = 0; i < signal.channels; ++i) {
                const double level = part.decibels[i < part.decibels.size() ? i : 0];
                samples.push_back(static_cast<float>(FromDecibels(level) * sine));
            }
        }
    }
    return samples;
}

TEST_F(Loudness, IntegratedOfTech3341) {
    const std::vector<TSignal> signals{
        {"1", 2, {{{-23}, 20}}, -23},
        {"2", 2, {{{-33}, 20}}, -33},
        {"3", 2, {{{-36}, 10}, {{-23}, 60}, {{-36}, 10}}, -23},
        {"4", 2, {{{-72}, 10}, {{-36}, 10}, {{-23}, 60}, {{-36}, 10}, {{-72}, 10}}, -23},
        {"5", 2, {{{-26}, 20}, {{-20}, 20.1}, {{-26}, 20}}, -23},
        {"6", 5, {{{-28, -28, -24, -30, -30}, 20}}, -23},
    };
    for (const TSignal& signal : signals) {
        SCOPED_TRACE(signal.name);
        const auto levels = Measure(Synthesise(signal, 48000), {.channels = signal.channels});
        EXPECT_NEAR(levels.integrated, signal.expected, 0.1);
    }
}

TEST_F(Loudness, IsThatOfAnySampleRate) {
    for (const std::uint32_t rate : {8000U, 11025U, 44100U, 96000U, 192000U}) {
        SCOPED_TRACE(rate);
        const auto samples = Synthesise({"", 1, {{{-20}, 5}}, 0}, rate);
        const auto levels = Measure(samples, {.samplesPerSec = rate, .channels = 1});
        EXPECT_NEAR(levels.integrated, -23, 0.1);
        EXPECT_NEAR(levels.momentaryMax, -23, 0.1);
    }
}

TEST_F(Loudness, MomentaryAndShortTermOfTech3341) {
    // 1 and 2: the same as the integrated.
    std::vector<float> steady;
    AppendSine(steady, {-23, -23}, 20);
    const TAudioLevels levels = Measure(steady);
    EXPECT_NEAR(levels.momentaryMax, -23, 0.1);
    EXPECT_NEAR(levels.shortTermMax, -23, 0.1);

    TSignal nine{"9", 2, {}, -23};
    for (int i = 0; i < 5; ++i) {
        nine.parts.push_back({{-20}, 1.34});
        nine.parts.push_back({{-30}, 1.66});
    }
    EXPECT_NEAR(Measure(Synthesise(nine, 48000)).shortTermMax, nine.expected, 0.1);

    TSignal twelve{"12", 2, {}, -23};
    for (int i = 0; i < 25; ++i) {
        twelve.parts.push_back({{-20}, 0.18});
        twelve.parts.push_back({{-30}, 0.22});
    }
    EXPECT_NEAR(Measure(Synthesise(twelve, 48000)).momentaryMax, twelve.expected, 0.1);
}

TEST_F(Loudness, RangeOfTech3342) {
    const std::vector<TSignal> signals{
        {"1", 2, {{{-20}, 20}, {{-30}, 20}}, 10},
        {"2", 2, {{{-20}, 20}, {{-15}, 20}}, 5},
        {"3", 2, {{{-40}, 20}, {{-20}, 20}}, 20},
        {"4", 2, {{{-50}, 20}, {{-35}, 20}, {{-20}, 20}, {{-35}, 20}, {{-50}, 20}}, 15},
    };
    for (const TSignal& signal : signals) {
        SCOPED_TRACE(signal.name);
        EXPECT_NEAR(Measure(Synthesise(signal, 48000)).range, signal.expected, 1);
    }
}

TEST_F(Loudness, TruePeaksOfTech3341) {
    // The part of the sample rate, the phase in degrees, the amplitude, and the true peak in dBTP.
    const struct {
        const char* name;
        int divisor;
        double phase;
        double amplitude;
        double expected;
    } rows[] = {{"15", 4, 0, 0.5, -6},
                {"16", 4, 45, 0.5, -6},
                {"17", 6, 60, 0.5, -6},
                {"18", 8, 67.5, 0.5, -6},
                {"19", 4, 45, 1.41, 3}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<float> samples;
        for (int i = 0; i < 48000; ++i) {
            const double turns = static_cast<double>(i % row.divisor) / row.divisor + row.phase / 360;
            // A sudden beginning has peaks of its own.
            const double fade = std::min(i / 4800.0, 1.0);
            const double sine = std::sin(2 * std::numbers::pi * turns);
            samples.insert(samples.end(), 2, static_cast<float>(fade * row.amplitude * sine));
        }
        const double peak = ToDecibels(Measure(samples).truePeak);
        EXPECT_LE(peak, row.expected + 0.2);
        EXPECT_GE(peak, row.expected - 0.4);
        EXPECT_GE(meter_->GetLevels().truePeak, meter_->GetLevels().peak);
        EXPECT_EQ(meter_->GetChannelLevels(1).truePeak, meter_->GetLevels().truePeak);
    }
}

TEST_F(Loudness, EqualsTheMeterOfFfmpeg) {
    const fs::path folder = BesideProgram("measure-files");
    std::ifstream rows(folder / "measured.txt");
    std::string name;
    TAudioMeterSettings settings;
    double integrated = 0;
    double range = 0;
    double peak = 0;
    int count = 0;
    while (rows >> name >> settings.channels >> settings.samplesPerSec >> integrated >> range >> peak) {
        SCOPED_TRACE(name);
        ++count;
        const std::string bytes = ReadFile(folder / (name + ".f32"));
        std::vector<float> samples(bytes.size() / sizeof(float));
        std::memcpy(samples.data(), bytes.data(), bytes.size());
        const TAudioLevels levels = Measure(samples, settings);
        EXPECT_NEAR(levels.integrated, integrated, 0.1);
        EXPECT_NEAR(levels.range, range, 0.3);
        EXPECT_NEAR(ToDecibels(levels.truePeak), peak, 0.2);
    }
    EXPECT_EQ(count, 3);
}

TEST_F(Loudness, NothingAboveTheGateIsMinusInfinity) {
    constexpr double kNothing = -std::numeric_limits<double>::infinity();
    std::vector<float> samples;
    AppendSine(samples, {-80, -80}, 5);
    const TAudioLevels quiet = Measure(samples);
    EXPECT_EQ(quiet.integrated, kNothing);
    EXPECT_EQ(quiet.range, 0);
    EXPECT_NEAR(quiet.momentaryMax, -80, 0.1);
    const TAudioLevels none = Measure({});
    EXPECT_EQ(none.integrated, kNothing);
    EXPECT_EQ(none.momentaryMax, kNothing);
    EXPECT_EQ(none.shortTermMax, kNothing);
    EXPECT_EQ(none.range, 0);
    samples.clear();
    AppendSine(samples, {-20, -20}, 0.3);
    EXPECT_EQ(Measure(samples).integrated, kNothing);
}

TEST_F(Loudness, LoudspeakersCountByTheirPlace) {
    const auto measure = [&](std::uint32_t channels, std::uint32_t mask, std::uint32_t channel) {
        std::vector<float> samples;
        AppendSine(samples, {-20}, 2);
        std::vector<float> frames(samples.size() * channels);
        for (std::size_t i = 0; i < samples.size(); ++i) frames[i * channels + channel] = samples[i];
        return Measure(frames, {.channels = channels, .channelMask = mask}).integrated;
    };
    const double front = measure(1, 0, 0);
    EXPECT_NEAR(front, -23, 0.1);
    // 1.5 dB more at the sides (ITU-R BS.1770), nothing for low-frequency effects.
    const double side = 10 * std::log10(1.41);
    EXPECT_NEAR(measure(6, 0, 0), front, 1e-6);
    EXPECT_NEAR(measure(6, 0, 4) - front, side, 1e-3);
    EXPECT_NEAR(measure(6, 0x60F, 4) - front, side, 1e-3);
    EXPECT_TRUE(std::isinf(measure(6, 0, 3)));
    // 7.1: those in the back, then those at the sides.
    EXPECT_NEAR(measure(8, 0, 4), front, 1e-6);
    EXPECT_NEAR(measure(8, 0, 6) - front, side, 1e-3);
    // A channel without a loudspeaker, and more channels than masks have bits.
    EXPECT_NEAR(measure(3, 0x3, 2), front, 1e-6);
    EXPECT_NEAR(measure(40, 0, 39), front, 1e-6);
}

} // namespace
} // namespace vorlund::test
