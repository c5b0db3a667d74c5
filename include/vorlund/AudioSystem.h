/// \file
/// Audio systems: which outputs and inputs there are, and when that changes.
#pragma once

#include <vorlund/AudioInput.h>

namespace vorlund {

class IObjectList;

/// The class of the plug-in audio, for `CreateAs<IAudioSystem>`. Without the plug-in the class store knows no
/// such class. Since version 0.1.
inline constexpr CId kAudioSystemClassId{0x71F3A86C, 0x2D954B0E, 0x84A6E9D3, 0x0F5C7B21};

/// Since version 0.1.
enum TAudioDirection : std::uint32_t {
    AUDIO_DIRECTION_OUTPUT = 0,
    AUDIO_DIRECTION_INPUT = 1,
    /// An input that records what an output plays.
    AUDIO_DIRECTION_LOOPBACK = 2
};

/// A device as it was when it was listed. Since version 0.1.
class IAudioDeviceInfo : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x95D04F3A, 0x6E1B4C72, 0xA8F2D716, 0x3B40E58C};

    /// The name by which `CreateOutput` and `CreateInput` find it, the same on every start as far as the
    /// system allows. Texts live as long as the object.
    virtual const wchar* GetId() = 0;
    /// The name for people, in the language of the system.
    virtual const wchar* GetName() = 0;
    virtual TAudioDirection GetDirection() = 0;
    virtual bool IsDefault() = 0;
    /// What the device likes best; 0 where the system does not say.
    virtual std::uint32_t GetChannels() = 0;
    virtual std::uint32_t GetSamplesPerSec() = 0;

protected:
    ~IAudioDeviceInfo() = default;
};

/// Lists devices, and makes outputs and inputs. Any thread. Since version 0.1.
///
/// \code{.cpp}
/// CSteppedAudio audio; // for tests; programs take CreateAs<IAudioSystem>(kAudioSystemClassId)
/// const auto system = CRefPtr<IAudioSystem>::Adopt(audio.GetSystem());
/// for (const auto& device : Each<IAudioDeviceInfo>(system->EnumerateDevices(AUDIO_DIRECTION_OUTPUT)))
///     std::printf("%s %d\n", TextToUtf8(device->GetId()).c_str(), device->IsDefault());
/// // prints a 1
/// // prints b 0
/// \endcode
class IAudioSystem : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0xE4276B19, 0x90CD4A53, 0xB71E08F5, 0x6A2D3C84};

    /// What carries the sound, for people: "PulseAudio" for example. Lives as long as the object.
    virtual const wchar* GetName() = 0;

    /// A new list of `IAudioDeviceInfo`, owned by the caller, in the system's order. Resets the change event
    /// before it looks, so that no change is missed. Raises `CFailedException` with the system's reason when
    /// there is no sound system.
    virtual IObjectList* EnumerateDevices(TAudioDirection direction) = 0;

    /// Set when devices have come or gone or another one is the default, until the next `EnumerateDevices`.
    /// The object's own; who needs an event for himself creates an object for himself.
    virtual CEvent& GetChangeEvent() = 0;

    /// A closed output, one reference for the caller. It finds its device when it is opened.
    ///
    /// \param id  of a listed device; null or empty for the default one, which is followed: when it is lost
    /// or
    ///            another one takes its place, sound goes on there
    virtual IAudioOutput* CreateOutput(const wchar* id) = 0;

    /// The same for inputs, those of `AUDIO_DIRECTION_LOOPBACK` included.
    virtual IAudioInput* CreateInput(const wchar* id) = 0;

protected:
    ~IAudioSystem() = default;
};

} // namespace vorlund
