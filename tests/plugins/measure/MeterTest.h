/// \file
/// A meter of the plug-in, and signals to measure.
#pragma once

#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"
#include "support/LibraryScope.h"

#include <vorlund/AudioMeter.h>
#include <vorlund/PluginStore.h>
#include <vorlund/RefPtr.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <numbers>
#include <vector>

namespace vorlund::test {

inline double FromDecibels(double decibels) {
    return std::pow(10, decibels / 20);
}

/// A sine wave, appended to each channel with a level of its own.
inline void AppendSine(std::vector<float>& samples, std::initializer_list<double> decibels, double seconds,
                       double hertz = 1000, std::uint32_t rate = 48000) {
    const auto frames = static_cast<std::size_t>(std::lround(seconds * rate));
    for (std::size_t i = 0; i < frames; ++i) {
        const double sine = std::sin(2 * std::numbers::pi * hertz * static_cast<double>(i) / rate);
        for (const double level : decibels) samples.push_back(static_cast<float>(FromDecibels(level) * sine));
    }
}

/// The library with the plug-in.
class CMeterTest : public testing::Test {
protected:
    CMeterTest() {
        store_.AddPluginPath(ToVorlund(BesideProgram("vorlund-plugins")).c_str());
        store_.LoadPlugin(VRL_L("measure"));
        meter_ = CreateAs<IAudioMeter>(classid::CAudioMeter).Detach();
    }
    ~CMeterTest() override {
        meter_->Release();
        store_.Close();
    }

    TAudioLevels Measure(const std::vector<float>& samples, const TAudioMeterSettings& settings = {}) {
        meter_->Start(settings);
        meter_->Write(samples.data(), samples.size() / settings.channels);
        return meter_->GetLevels();
    }
    std::vector<TFrameRange> GetRanges(TAudioFinding finding) {
        std::vector<TFrameRange> ranges(IAudioMeter::kMaxRanges);
        ranges.resize(meter_->GetRanges(finding, ranges.data(), ranges.size()));
        return ranges;
    }

private:
    CLibraryScope library_;
    CPluginStore store_;

protected:
    IAudioMeter* meter_ = nullptr;
};

} // namespace vorlund::test
