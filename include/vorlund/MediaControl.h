/// \file
/// `IMediaControl`, the controls of playback. One thread at a time.
#pragma once

#include <vorlund/Object.h>

#include <cstdint>

namespace vorlund {

/// Bits of `IMediaControl::GetCapabilities`.
enum TMediaControlCapability : std::uint32_t {
    MEDIA_CONTROL_CAPABILITY_PLAY = 1,  ///< playing and stopping
    MEDIA_CONTROL_CAPABILITY_PAUSE = 2, ///< pausing
    MEDIA_CONTROL_CAPABILITY_SEEK = 4,  ///< positions can be set
    MEDIA_CONTROL_CAPABILITY_RANGE = 8, ///< a part can be played
    MEDIA_CONTROL_CAPABILITY_RATE = 16  ///< the rate can be set
};

/// Controls playback. Times are in seconds. The library's class controls nothing: it accepts every call,
/// reports all capabilities, time 0 and that nothing plays.
class IMediaControl : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x9EB958F3, 0xBD18CDC2, 0x07FF3DD4, 0xA5F78189};

    /// Sets how fast to play; 1 is normal.
    virtual void SetRate(float rate) = 0;
    /// Goes back to the start.
    virtual void Rewind() = 0;
    /// `TMediaControlCapability` bits.
    virtual std::uint32_t GetCapabilities() = 0;
    /// The length of the media in seconds.
    virtual float GetDuration() = 0;
    /// True while the media play.
    virtual bool IsPlaying() = 0;
    /// Stops playing and keeps the time: `Play` continues from there.
    virtual void Pause() = 0;
    /// Plays from the current time on.
    virtual void Play() = 0;
    /// Sets the time, in seconds from the start.
    virtual void Seek(float time) = 0;
    /// Limits playing to the part from `begin` to `end`, in seconds from the start.
    virtual void SetRange(float begin, float end) = 0;
    /// Stops playing.
    virtual void Stop() = 0;
    /// The current time, in seconds from the start.
    virtual float GetTime() = 0;

protected:
    ~IMediaControl() = default;
};

} // namespace vorlund
