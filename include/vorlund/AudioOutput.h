/// \file
/// Audio outputs: what plays sound. The plug-in audio has those of the system; `CreateNullAudioOutput`,
/// `CreateFileAudioOutput` and `CSteppedAudio` (AudioDevices.h) need neither hardware nor plug-in.
#pragma once

#include <vorlund/Device.h>

#include <cstdint>

namespace vorlund {

class CEvent;
class IInputStream;
struct TDataFormat_AudioPcm;

/// What an output or an input is doing. Since version 0.1.
enum TAudioState : std::uint32_t {
    AUDIO_STATE_CLOSED = 0,
    /// Frames move, or would if there were any.
    AUDIO_STATE_RUNNING = 1,
    AUDIO_STATE_PAUSED = 2,
    /// The device is gone, and no other has taken its place. `Close` and `OpenOutput` try anew.
    AUDIO_STATE_LOST = 3
};

/// The latency that the device suggests, for `OpenOutput` and `OpenInput`. Since version 0.1.
inline constexpr double kDefaultAudioLatency = 0;

/// Plays PCM audio. Frames are queued by `Write` or come from a stream, are brought to the rate of the device
/// by the plug-in `resample` and to its format by the rules of AudioConversion.h, clipped and at true scale,
/// mixed at `MIX_LEVEL_SAFE` where it has other channels, and leave in the order in which they came.
///
/// `Open` of `IDevice` opens for floats, two channels, 48,000 frames a second and the device's own latency;
/// `Close` drops what is not yet played and ends every wait of other threads. Opening an open output closes
/// it first. The operations may be called from any thread, the one that a callback of the system runs on
/// excepted; frames of two threads that write at the same time are not mixed with each other, but which come
/// first is open. Operations without a device raise `CInvalidStateException` "Device is not open", and those
/// that would wait for a device that is gone, and is not followed, `CFailedException` "Device is lost". Since
/// version 0.1.
///
/// \code{.cpp}
/// const auto output = CRefPtr<IAudioOutput>::Adopt(CreateFileAudioOutput(VRL_L("played.wav")));
/// output->OpenOutput({SAMPLE_FORMAT_16BIT, 2, 22050}, kDefaultAudioLatency);
/// const CInputStreamSelector file(VRL_L("strings.wav"));
/// output->Play(file.GetInputStreamTmp()); // decodes and converts it
/// output->Drain();                        // until the last frame is heard
/// std::printf("%d frames\n", static_cast<int>(output->GetPosition())); // prints 101430 frames
/// output->Close();
/// \endcode
class IAudioOutput : public IDevice {
public:
    using TBase = IDevice;
    static constexpr CId InterfaceId{0x0A9C4E27, 0x5B1D4D86, 0x8E7F30C2, 0xD41B6F95};

    /// Opens the device for frames of `format`.
    ///
    /// \param format   of the frames that `Write` takes
    /// \param latency  wished seconds between a frame's being queued last and its being heard, 0.001 to 10,
    /// of
    ///                 which the device makes what it can; `kDefaultAudioLatency` leaves it to the device
    ///
    /// Raises `CDataFormatException` "Unsupported audio format" for an unknown sample format, no channels or
    /// more than 8, and a rate outside 1,000 to 768,000; `CInvalidParameterException` "Latency must be 1
    /// millisecond to 10 seconds", also for what is no number; `CFailedException` with the system's reason
    /// when there is no device, "Device has an impossible format", "Cannot start a thread", or "No resampler:
    /// the device plays at another rate" when the plug-in `resample` is missed. The output is closed then.
    virtual void OpenOutput(const TDataFormat_AudioPcm& format, double latency) = 0;

    /// Queues `size` bytes of frames and returns when all of them are queued, so it waits while the queue is
    /// full and the output paused. Returns how many bytes were queued: less only when `Close` or `Flush` of
    /// another thread ended the wait. Raises `CNullPtrException` "buffer is NULL" unless `size` is 0,
    /// `CInvalidParameterException` "Size is no whole number of frames", and `CInvalidStateException` "A
    /// stream is playing" while one is.
    virtual std::uint64_t Write(const void* buffer, std::uint64_t size) = 0;

    /// How many bytes `Write` would take without waiting.
    virtual std::uint64_t GetWritable() = 0;

    /// Plays a stream, from its position on, on a thread of the output: behind what is queued, and behind
    /// streams that were given before, without a gap. The codec class store decodes it as converters do; its
    /// PCM may have any format and rate. The output holds a reference, and nobody else may use the stream
    /// until it has ended: until `GetPlayingStreams` has become less, `Flush` or `Close`. A stream that
    /// raises ends there, and `GetStreamError` tells of it. It may call the output, which then waits for
    /// nothing of its own: `Drain` returns false.
    ///
    /// \warning Reading counts references of the stream and of what it reads from. Keep the reference that
    /// you have until the stream has ended, and neither copy nor release it meanwhile.
    ///
    /// Raises `CNullPtrException` "stream is NULL" and `CDataFormatException` "Unsupported format in decoded
    /// stream".
    virtual void Play(IInputStream* stream) = 0;

    /// How many streams are waiting or not yet read to their end.
    virtual std::uint32_t GetPlayingStreams() = 0;

    /// Set while no stream is waiting or being read; the output's own, valid while it lives.
    virtual CEvent& GetIdleEvent() = 0;

    /// What the last stream that did not end well raised, as one line, or the empty text. `room` counts units
    /// with the closing zero; longer texts are cut. Opening forgets it. Returns the length of the whole text.
    virtual std::uint32_t GetStreamError(wchar* text, std::uint32_t room) = 0;

    /// Stops the time of the output, or lets it go on. Neither loses or repeats a frame that the device has
    /// not yet taken. An output is not paused when it is opened.
    virtual void SetPaused(bool isPaused) = 0;

    /// Waits until everything that is queued, and every stream, has been played. Returns false when `Close`
    /// or `Flush` of another thread ended the wait, or the output is paused. An end shorter than a period is
    /// filled with silence.
    virtual bool Drain() = 0;

    /// Drops what is queued and not yet given to the device, and the streams; waits for a `Read` of a stream
    /// that is under way, as `Close` does. Position and volume stay.
    virtual void Flush() = 0;

    /// Frames of the opened format that have been heard since `OpenOutput`, silence in gaps not counted: the
    /// frame that is heard now. Never goes back.
    virtual std::uint64_t GetPosition() = 0;

    /// Frames between the last one queued and the one that is heard now.
    virtual std::uint64_t GetDelay() = 0;

    /// A factor for every sample, 0 to 16, 1 at first; takes effect with the next frames that the device
    /// takes. Raises `CInvalidParameterException` "Volume must be 0 to 16", also for what is no number.
    /// Also while closed.
    virtual void SetVolume(float volume) = 0;
    virtual float GetVolume() = 0;

    /// How often the device wanted frames and there were none, since `OpenOutput`: a gap counts once. Neither
    /// what comes before the first frame counts, nor an end that `Drain` waits for, nor the end of the last
    /// stream. Also while closed.
    virtual std::uint64_t GetXruns() = 0;

    /// Also while closed.
    virtual TAudioState GetState() = 0;

    /// The format that `OpenOutput` was called with. It is valid until the output is closed, as that of the
    /// device is.
    virtual const TDataFormat_AudioPcm& GetFormat() = 0;

    /// The format that the device takes, and the latency of what is queued for it: whole periods, in seconds.
    virtual const TDataFormat_AudioPcm& GetDeviceFormat() = 0;
    virtual double GetLatency() = 0;

protected:
    ~IAudioOutput() = default;
};

} // namespace vorlund
