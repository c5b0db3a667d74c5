// Loudness and true peaks, by libebur128.
#pragma once

#include <vorlund/AudioMeter.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include <ebur128.h>

class CLoudness {
public:
    /// Raises `std::bad_alloc`.
    explicit CLoudness(const vorlund::TAudioMeterSettings& settings);

    /// Raises `std::bad_alloc`.
    void Write(const float* samples, std::size_t frames);

    double GetIntegrated() const;
    double GetRange() const;
    double GetMomentaryMax() const { return ToLoudness(momentary_.max); }
    double GetShortTermMax() const { return ToLoudness(shortTerm_.max); }
    double GetTruePeak(std::uint32_t channel) const;

private:
    struct TEnd {
        void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
    };
    /// The highest mean of the powers of the last tenths of a second.
    template <std::size_t kTenths> struct TWindow {
        void Add(double power) {
            powers[next] = power;
            next = (next + 1) % kTenths;
            double sum = 0;
            for (const double each : powers) sum += each;
            if (sum / kTenths > max) max = sum / kTenths;
        }
        std::array<double, kTenths> powers = {};
        std::size_t next = 0;
        double max = 0;
    };

    static double ToLoudness(double power);

    std::unique_ptr<ebur128_state, TEnd> state_;
    const std::uint32_t channels_;
    const std::uint32_t tenth_;
    std::uint32_t untilTenth_ = tenth_;
    TWindow<4> momentary_;
    TWindow<30> shortTerm_;
};
