// What docs/resampling.md promises, measured with tones over the whole band.
#include "ResamplerTest.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>

namespace vorlund::test {
namespace {

constexpr std::uint32_t kRates[][2] = {{44100, 48000}, {48000, 44100}, {44100, 96000},  {96000, 44100},
                                       {48000, 96000}, {96000, 48000}, {44100, 192000}, {192000, 44100},
                                       {8000, 48000},  {48000, 8000},  {44101, 47999}};

/// A tone in a result, by least squares, and what is beside it.
struct TTone {
    double amplitude = 0;
    /// Of the phase, in periods.
    double delay = 0;
    double rest = 0;
};

TTone FindTone(const TFloats& sound, std::size_t first, std::size_t last, double frequency, bool isThere) {
    double cc = 0, ss = 0, cs = 0, xc = 0, xs = 0;
    const double step = 2 * std::numbers::pi * frequency;
    for (std::size_t i = first; i < last; ++i) {
        const double c = std::cos(step * static_cast<double>(i));
        const double s = std::sin(step * static_cast<double>(i));
        cc += c * c, ss += s * s, cs += c * s, xc += sound[i] * c, xs += sound[i] * s;
    }
    const double determinant = cc * ss - cs * cs;
    const double a = isThere ? (xs * cc - xc * cs) / determinant : 0;
    const double b = isThere ? (xc * ss - xs * cs) / determinant : 0;
    double power = 0;
    for (std::size_t i = first; i < last; ++i) {
        const double at = step * static_cast<double>(i);
        const double rest = sound[i] - a * std::sin(at) - b * std::cos(at);
        power += rest * rest;
    }
    return {std::hypot(a, b), -std::atan2(b, a) / (2 * std::numbers::pi),
            std::sqrt(2 * power / static_cast<double>(last - first))};
}

double ToDecibels(double ratio) {
    return 20 * std::log10(std::max(ratio, 1e-12));
}

/// What a quality makes of two rates.
struct TFigures {
    /// The most that is beside any tone, of what the tone has, in decibels: aliases, images and noise.
    double beside = -300;
    /// The same of tones above the band of the result.
    double aliases = -300;
    /// The part of the smaller band where tones keep their level within 0.1 dB.
    double passband = 0;
    /// The most that a tone comes late or early, in frames of the source.
    double delay = 0;
};

/// What is promised.
struct TPromise {
    std::uint32_t quality;
    double beside;
    double passband;
};

class ResamplerQuality : public CResamplerTest {
protected:
    static constexpr std::size_t kFrames = 24000;
    static constexpr int kTones = 40;

    TTone MakeTone(double part, const TResampling& resampling) {
        const double low = std::min(resampling.inputRate, resampling.outputRate);
        // Of the source's frames a period, from the smaller band.
        const double frequency = part * low / 2 / resampling.inputRate;
        TFloats source(kFrames);
        for (std::size_t i = 0; i < kFrames; ++i)
            source[i] =
                static_cast<float>(std::sin(2 * std::numbers::pi * frequency * static_cast<double>(i)));
        const TFloats result = Resample(source, resampling);
        // Away from both ends, where the sound begins and stops.
        const std::size_t edge = result.size() / 5;
        return FindTone(result, edge, result.size() - edge,
                        frequency * resampling.inputRate / resampling.outputRate, part < 1);
    }

    TFigures Measure(const TResampling& resampling) {
        TFigures figures;
        const double top = std::max(1.0, double{1} * resampling.inputRate / resampling.outputRate);
        bool isPassing = true;
        for (int i = 0; i < kTones; ++i) {
            // Densely to 0.91, and from there to the end of the band.
            const double part =
                i < kTones - 8 ? 0.01 + 0.9 * i / (kTones - 9) : 0.92 + 0.01 * (i + 8 - kTones);
            const TTone tone = MakeTone(part, resampling);
            figures.beside = std::max(figures.beside, ToDecibels(tone.rest));
            isPassing = isPassing && std::abs(ToDecibels(tone.amplitude)) < 0.1;
            if (!isPassing) continue;
            figures.passband = part;
            const double period =
                resampling.inputRate / (part / 2 * std::min(resampling.inputRate, resampling.outputRate));
            figures.delay = std::max(figures.delay, std::abs(tone.delay) * period);
        }
        for (int i = 0; top > 1 && i < kTones; ++i) {
            const double part = 1.005 + (top * 0.998 - 1.005) * i / (kTones - 1);
            figures.aliases = std::max(figures.aliases, ToDecibels(MakeTone(part, resampling).rest));
        }
        return figures;
    }
};

TEST_F(ResamplerQuality, IsAsPromised) {
    const TPromise promises[] = {
#ifdef VORLUND_TEST_SOXR
        {RESAMPLER_LOW, -100, 0.6},
        {RESAMPLER_MEDIUM, -105, 0.75},
        {RESAMPLER_HIGH, -120, 0.91},
        {RESAMPLER_BEST, -145, 0.91},
#else
        {RESAMPLER_LOW, -90, 0.65},
        {RESAMPLER_MEDIUM, -110, 0.8},
        {RESAMPLER_HIGH, -120, 0.91},
        {RESAMPLER_BEST, -120, 0.91},
#endif
    };
    for (const TPromise& promise : promises) {
        for (const auto& rates : kRates) {
            const TResampling resampling{rates[0], rates[1], 1, promise.quality};
            const TFigures figures = Measure(resampling);
            std::printf("quality %u, %u to %u: beside %.1f dB, aliases %.1f dB, passband %.3f, delay %.6f\n",
                        promise.quality, rates[0], rates[1], figures.beside, figures.aliases,
                        figures.passband, figures.delay);
            EXPECT_LE(figures.beside, promise.beside);
            EXPECT_LE(figures.aliases, promise.beside);
            EXPECT_GE(figures.passband, promise.passband - 1e-9);
            EXPECT_LE(figures.delay, 1e-4);
        }
    }
}

} // namespace
} // namespace vorlund::test
