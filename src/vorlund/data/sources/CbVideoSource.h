// The video source that calls the application.
#pragma once

#include "vorlund/data/sources/VideoSourceImpl.h"

#include <vorlund/CbVideoSource.h>
#include <vorlund/ClassIds.h>

namespace vorlund {

extern const TVideoSourceFailures kCbVideoSourceFailures;

/// Frames that a function paints.
class CCbVideoSource : public CVideoSourceImpl<ICbVideoSource, kCbVideoSourceFailures> {
public:
    static constexpr CId ClassId = classid::CCbVideoSource;

    CCbVideoSource() : CVideoSourceImpl(640, 480, TPlace::FrameBuffer) {}

    /// Kept for callers: the bit of writing, unlike the other sources.
    std::uint32_t GetCapabilities() override { return 8; }
    ICbVideoSource* SetCallback(TCallback callback) override;

protected:
    ~CCbVideoSource() = default;

private:
    void PaintFrame(void* pixels, std::uint32_t frameNumber) override;

    TCallback callback_ = nullptr;
};

} // namespace vorlund
