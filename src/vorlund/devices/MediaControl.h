// The default media control.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/MediaControl.h>
#include <vorlund/ObjectImpl.h>

namespace vorlund {

/// Controls nothing.
class CMediaControl : public CObjectImpl<IMediaControl> {
public:
    static constexpr CId ClassId = classid::CMediaControl;

    void SetRate(float) override {}
    void Rewind() override {}
    std::uint32_t GetCapabilities() override { return 31; }
    float GetDuration() override { return 0; }
    bool IsPlaying() override { return false; }
    void Pause() override {}
    void Play() override {}
    void Seek(float) override {}
    void SetRange(float, float) override {}
    void Stop() override {}
    float GetTime() override { return 0; }
};

} // namespace vorlund
