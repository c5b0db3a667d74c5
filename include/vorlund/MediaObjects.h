/// \file
/// Media objects of the devices area: clips, bitmaps, playback controls and settings pages. The library's own
/// classes are plain defaults; device plug-ins register better ones. One thread at a time, except that the
/// data of a clip or bitmap are guarded as those of a resource.
#pragma once

#include <vorlund/Resource.h>

#include <cstdint>

namespace vorlund {

struct TDataFormat_ImageRgb;

/// A piece of audio: a resource, usable wherever one is. The library's class keeps its data in a resource of
/// its own, made on first use, and hands every operation on to it, except `LockFormat`, which does nothing:
/// the format of a clip stays open. Any operation may raise `CBugException` "Cannot create resource" when the
/// resource class was replaced by one of another kind.
class IAudioClip : public IResource {
public:
    using TBase = IResource;
    static constexpr CId InterfaceId{0x478EAC60, 0x844E84AE, 0x1DA1DE3F, 0x1DA5759F};

protected:
    ~IAudioClip() = default;
};

/// A piece of video, in the same way.
class IVideoClip : public IResource {
public:
    using TBase = IResource;
    static constexpr CId InterfaceId{0x7C5FD705, 0x3DD86D87, 0x870814AF, 0xE9EC320D};

protected:
    ~IVideoClip() = default;
};

/// A picture, in the same way.
class IBitmap : public IResource {
public:
    using TBase = IResource;
    static constexpr CId InterfaceId{0x43536106, 0xF5130314, 0xA3A60A45, 0x1B4DFE2C};

    /// The size and the pixels of the picture: the resource's format record, valid until the format changes,
    /// or null when it is not an RGB image.
    virtual const TDataFormat_ImageRgb* GetImageFormat() = 0;

protected:
    ~IBitmap() = default;
};

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
    /// How long the media last.
    virtual float GetDuration() = 0;
    virtual bool IsPlaying() = 0;
    /// Stops for a while: `Play` goes on from here.
    virtual void Pause() = 0;
    virtual void Play() = 0;
    /// Goes to a time.
    virtual void Seek(float time) = 0;
    /// Limits playing to the part from `begin` to `end`.
    virtual void SetRange(float begin, float end) = 0;
    virtual void Stop() = 0;
    /// The time at which playing stands.
    virtual float GetTime() = 0;

protected:
    ~IMediaControl() = default;
};

/// A page of settings in a dialogue. What `argument` means is agreed between the page and the dialogue that
/// shows it, for example the number of a window. The library's class is a placeholder: it agrees to
/// everything and shows a message.
class IPropertyPage : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x82AAEB0C, 0xD16E6674, 0xBE9C503F, 0xAB88093D};

    /// Prepares the page; false when that failed.
    virtual bool Open(std::uint32_t argument) = 0;
    /// Takes the settings over; false when they are not valid.
    virtual bool Apply(std::uint32_t argument) = 0;
    /// Goes back to the settings that hold; false when that failed.
    virtual bool Reset(std::uint32_t argument) = 0;
    /// The page goes; false to keep it open.
    virtual bool Close(std::uint32_t argument) = 0;
    /// Shows the page; false when there is nothing to show. The library's class prints the
    /// `DEBUG_MESSAGE_BOX` message "This is the default property page object" and returns false.
    virtual bool Show() = 0;

protected:
    ~IPropertyPage() = default;
};

} // namespace vorlund
