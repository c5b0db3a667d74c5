/// \file
/// Audio inputs: what records sound.
#pragma once

#include <vorlund/AudioOutput.h>

namespace vorlund {

/// Records PCM audio. `Open` of `IDevice` opens for floats, two channels, 48,000 frames a second. What the
/// device delivers becomes the format that was asked for, as with an output. Operations without a device
/// raise as those of `IAudioOutput` do. Since version 0.1.
///
/// \code{.cpp}
/// const auto input = CRefPtr<IAudioInput>::Adopt(CreateNullAudioInput()); // hears silence
/// input->OpenInput({SAMPLE_FORMAT_16BIT, 1, 8000}, kDefaultAudioLatency);
/// const auto heard = CRefPtr<IInputStream>::Adopt(input->GetStream());
/// std::int16_t samples[80];
/// std::printf("%d\n", ReadWhole(*heard, samples, sizeof samples)); // prints 1
/// input->Close();
/// \endcode
class IAudioInput : public IDevice {
public:
    using TBase = IDevice;
    static constexpr CId InterfaceId{0x3E81F0B4, 0xC7A2465D, 0xB90D52A8, 0x1C6E93F7};

    /// Opens the device and begins to record. Parameters and failures are those of
    /// `IAudioOutput::OpenOutput`. At least a second is kept for a reader that is late.
    virtual void OpenInput(const TDataFormat_AudioPcm& format, double latency) = 0;

    /// What is recorded, as a stream in the format that was asked for; one reference for the caller. There is
    /// one for each `OpenInput`, and each call gives the same. `Read` waits until it can fill the buffer, and
    /// gives less only at the end: when the input was closed, stopped or lost, and everything before that has
    /// been read. `GetReadError` tells a loss, `ENODEV`, from an end. There are no positions but `Tell`, and
    /// no length. One thread reads and counts it; others may close or stop the input, and open it again when
    /// the reader has ended.
    virtual IInputStream* GetStream() = 0;

    /// How many bytes `Read` would give without waiting.
    virtual std::uint64_t GetReadable() = 0;

    /// While paused, what the device hears is dropped; the stream goes on without a gap.
    virtual void SetPaused(bool isPaused) = 0;

    /// Ends recording; the input counts as paused then. What was recorded can still be read, up to its last
    /// frame.
    virtual void Stop() = 0;

    /// Frames recorded since `OpenInput`, read or not.
    virtual std::uint64_t GetPosition() = 0;

    /// How often frames were lost, because nobody read them or the system says so. Also while closed.
    virtual std::uint64_t GetXruns() = 0;

    /// Also while closed.
    virtual TAudioState GetState() = 0;

    /// The format that the device gives, and its latency in seconds.
    virtual const TDataFormat_AudioPcm& GetDeviceFormat() = 0;
    virtual double GetLatency() = 0;

protected:
    ~IAudioInput() = default;
};

} // namespace vorlund
