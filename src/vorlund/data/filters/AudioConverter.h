// The filter that `CreateAudioConverter` makes.
#pragma once

#include <vorlund/AudioConversion.h>
#include <vorlund/PcmFilterImpl.h>

#include <cstdint>

namespace vorlund {

class CAudioConverter : public CPcmFilterImpl<IInputStreamFilter> {
    using TLayer = CPcmFilterImpl<IInputStreamFilter>;

public:
    static constexpr CId ClassId{0x3E0C51D7, 0x4A92B86F, 0x8D13F5A4, 0x60B7C92E};

    /// Once, before anything else; the target has been checked.
    void SetTarget(const TAudioTarget& target);

    void Seek(std::int64_t position) override;

protected:
    ~CAudioConverter() noexcept(false) = default;

private:
    void BeginSource() override;
    void BeginAt(std::uint64_t frame) override { frame_ = frame; }
    std::uint64_t GetOutputFrames(std::uint64_t frames) override { return frames; }
    void Make(CBlockBuffer& output, const std::byte* block, std::size_t frames, bool isLast) override;

    TAudioTarget target_;
    TMixMatrix mix_;
    TAudioConversion conversion_;
    std::uint64_t frame_ = 0;
};

} // namespace vorlund
