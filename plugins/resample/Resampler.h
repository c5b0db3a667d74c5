// The filter, and the same for plain buffers.
#pragma once

#include "Engine.h"

#include <vorlund/PcmFilterImpl.h>
#include <vorlund/Resampler.h>

#include <cstdint>
#include <memory>
#include <vector>

/// What an engine makes, cut or filled with silence to the length that it should have.
class CResampledSound {
public:
    explicit CResampledSound(const vorlund::TResampling& resampling);

    /// Appends what a block makes. All blocks but the last have one size, so that the same comes out whatever
    /// the caller's are.
    void Make(vorlund::CBlockBuffer& output, const float* block, std::size_t frames, bool isLast);

private:
    vorlund::TResampling resampling_;
    /// Null at equal rates.
    std::unique_ptr<IEngine> engine_;
    std::uint64_t taken_ = 0;
    std::uint64_t made_ = 0;
};

class CResampler : public vorlund::CPcmFilterImpl<vorlund::IResampler> {
    using TLayer = vorlund::CPcmFilterImpl<vorlund::IResampler>;

public:
    static constexpr vorlund::CId ClassId = vorlund::kResamplerClassId;

    void Disconnect() override;
    void Seek(std::int64_t position) override;
    void SetTarget(std::uint32_t samplesPerSec, std::uint32_t quality) override;
    void Resample(float* destination, const float* source, std::size_t frames,
                  const vorlund::TResampling& resampling) override;

protected:
    ~CResampler() noexcept(false) = default;

private:
    void BeginSource() override;
    void BeginAt(std::uint64_t frame) override;
    std::uint64_t GetOutputFrames(std::uint64_t frames) override;
    void Make(vorlund::CBlockBuffer& output, const std::byte* block, std::size_t frames,
              bool isLast) override;

    std::uint32_t rate_ = 0;
    std::uint32_t quality_ = vorlund::RESAMPLER_HIGH;
    vorlund::TResampling resampling_;
    std::unique_ptr<CResampledSound> sound_;
    /// The source's samples as floats, where they are not.
    std::vector<float> block_;
};
