// The class behind `IAudioMeter`.
#pragma once

#include "Loudness.h"
#include "RangeList.h"

#include <vorlund/AudioMeter.h>
#include <vorlund/ObjectImpl.h>

#include <optional>
#include <vector>

class CAudioMeter : public vorlund::CObjectImpl<vorlund::IAudioMeter> {
public:
    static constexpr vorlund::CId ClassId = vorlund::classid::CAudioMeter;

    void Start(const vorlund::TAudioMeterSettings& settings) override;
    void Write(const float* samples, std::size_t frames) override;
    vorlund::TAudioLevels GetLevels() override;
    vorlund::TChannelLevels GetChannelLevels(std::uint32_t channel) override;
    std::size_t GetRanges(vorlund::TAudioFinding finding, vorlund::TFrameRange* ranges,
                          std::size_t room) override;

protected:
    CAudioMeter() = default;
    ~CAudioMeter() = default;

private:
    struct TChannel {
        explicit TChannel(std::uint32_t clippedRun) : clipping(clippedRun) {}
        double peak = 0;
        double sum = 0;
        double squares = 0;
        CRunFinder clipping;
    };
    /// What belongs to one measurement.
    struct TMeasurement {
        explicit TMeasurement(const vorlund::TAudioMeterSettings& wanted);
        void CountFrame(const float* samples);

        vorlund::TAudioMeterSettings settings;
        CLoudness loudness;
        std::vector<TChannel> channels;
        CRunFinder silence;
        CRangeList silences;
        CRangeList clippings;
        std::uint64_t frames = 0;
        double peak = 0;
        std::uint64_t peakFrame = 0;
        std::uint64_t notFinite = 0;
    };

    /// Raises "Not started".
    TMeasurement& GetMeasurement();

    std::optional<TMeasurement> measurement_;
    /// Samples without those that are not finite.
    std::vector<float> block_;
};
