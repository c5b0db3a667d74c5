/// \file
/// Ports: the way to sound hardware, for authors of audio plug-ins. A port moves blocks of frames between a
/// device and its client, in a format that the device likes, and knows nothing of conversions, queues and
/// positions: `CreateAudioOutput` and `CreateAudioInput` make the devices that applications use on top of it.
#pragma once

#include <vorlund/Object.h>

#include <cstdint>

namespace vorlund {

class IAudioInput;
class IAudioOutput;

/// How a port moves frames. Since version 0.1.
struct TAudioPortFormat {
    /// A `TSampleFormat`.
    std::uint32_t sampleFormat;
    std::uint32_t channels;
    std::uint32_t samplesPerSec;
    /// Frames of a usual call of `Process`. In a wish, 0 leaves it to the port.
    std::uint32_t periodFrames;
    /// How many of them the client keeps ready for the device. In a wish, 0 leaves it to the port.
    std::uint32_t periods;
};

/// The side of a port that the library implements. The port calls it from a thread of its own or of the
/// system, one call at a time, between `Start` and the return of `Stop`. No call waits for a lock, allocates
/// or raises, so it may come from where a system allows none of that. Since version 0.1.
class IAudioPortClient {
public:
    /// Output: fills `buffer` with the next `frames` frames, silence where there are none. Input: takes them
    /// from `buffer`. Any number of frames.
    virtual void Process(void* buffer, std::uint32_t frames) noexcept = 0;

    /// The device has lost frames that this client gave or should have had, `count` times.
    virtual void NoteXruns(std::uint32_t count) noexcept = 0;

    /// The device is gone: unplugged, or its server has ended. `Process` does not come any more. May come
    /// twice, and from any thread, `Stop` still waits for it.
    virtual void NoteLost() noexcept = 0;

protected:
    ~IAudioPortClient() = default;
};

/// A port. The library opens, starts, stops and closes it from one thread at a time, not always the same. A
/// closed port can be opened again: that is how playing goes on when the device is lost and another one has
/// become the default. Since version 0.1.
class IAudioPort : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x6D0B7C51, 0xA2E4493F, 0x93C81FD0, 0x5B7A26E4};

    /// Opens the device for `client`, which lives until `Close`, and returns in which format it moves frames:
    /// `wish`, or what is near to it. Nothing moves before `Start`. Raises `CFailedException` with the
    /// system's reason, and is then closed.
    virtual TAudioPortFormat Open(const TAudioPortFormat& wish, IAudioPortClient& client) = 0;

    /// Gives the device back; nothing happens when it is closed. Stops first.
    virtual void Close() = 0;

    /// Begins to call the client; nothing happens when it has begun.
    virtual void Start() = 0;

    /// Ends to call the client: no call comes, and none is going on, when it returns. What the device has
    /// already taken may be heard to its end or not. Nothing happens when the port is not started.
    virtual void Stop() = 0;

    /// How many frames the device has taken from the client and not yet played, or has captured and not yet
    /// given to it, as far as the system tells. Where it only tells periods, a port counts down by
    /// the system's clock, because positions are as exact as this. Any thread, at any time between `Open` and
    /// `Close`; does not wait.
    virtual std::uint32_t GetDelay() = 0;

protected:
    ~IAudioPort() = default;
};

/// An output that plays through `port`, to which it holds a reference. With `reopens`, a lost device is
/// closed and opened again, at once and then once a second until that works: a port to the default device
/// follows it that way. What is queued waits for the next device, and so do `Write` and `Drain`; where that
/// has another format, it is converted once more. One reference for the caller. Raises `CNullPtrException`
/// "port is NULL". Since version 0.1.
VRL_API IAudioOutput* CreateAudioOutput(IAudioPort* port, bool reopens = false);

/// The same for an input. Since version 0.1.
VRL_API IAudioInput* CreateAudioInput(IAudioPort* port, bool reopens = false);

} // namespace vorlund
