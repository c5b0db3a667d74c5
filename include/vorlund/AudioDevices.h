/// \file
/// Audio devices without hardware, plug-in or store: one that drops, one that writes a file, and one whose
/// time is advanced by hand, for tests of everything that plays and records.
#pragma once

#include <vorlund/AudioSystem.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/WavWriter.h>

#include <cstddef>
#include <cstdint>

namespace vorlund {

/// An output that drops everything at the pace of a real clock. Takes every format as it is, one reference
/// for the caller. Any thread. Since version 0.1.
VRL_API IAudioOutput* CreateNullAudioOutput();

/// An input that hears silence, at the pace of a real clock. Since version 0.1.
VRL_API IAudioInput* CreateNullAudioInput();

/// An output that writes what it plays into a WAV file, by `CWavWriter`, from `OpenOutput` to `Close`, as
/// fast as frames come: it waits for them instead of writing silence, has no latency and never an xrun. The
/// file is empty of sound until the first frame. `OpenOutput` raises also what `CWavWriter` raises; when the
/// file cannot be written any more, the device is lost, and `Close` raises what the file raised.
///
/// \param path  the file's name; it is emptied by each `OpenOutput`
///
/// Raises `CNullPtrException` "path is NULL". Since version 0.1.
VRL_API IAudioOutput* CreateFileAudioOutput(const wchar* path);

/// An audio system whose time stands still until `Step`: what plays or records on it behaves the same in
/// every run and on every system, and minutes pass in moments. Faults happen at exact frames.
///
/// It has a device "a" that is the default, and "b", each an output with its loopback, and an input for each
/// that hears what `SetInput` gives it. A loopback has the name of the output with ".loopback" behind it, and
/// hears silence where its rate is another one. Each of them is for one output or input at a time: others
/// raise `CFailedException` "Device is in use" when they are opened. While the default device is gone, the
/// other one is the default. Devices take every format as it is unless `SetDeviceFormat` says otherwise; a
/// period has 128 frames and a buffer 4 periods unless `latency` asks for more or less.
///
/// `Step` returns when every output that was open has had time to read its streams and fill its queue, so
/// results do not depend on how fast threads are. Streams that are played must not wait for it. Operations
/// come from any thread, one at a time. Outputs and inputs may outlive the object: their devices are lost
/// then. Since version 0.1.
class VRL_API CSteppedAudio {
public:
    /// Raises `COutOfMemoryException` "malloc failed".
    CSteppedAudio();
    CSteppedAudio(const CSteppedAudio&) = delete;
    CSteppedAudio& operator=(const CSteppedAudio&) = delete;
    ~CSteppedAudio();

    /// The system with its devices; one reference for the caller.
    IAudioSystem* GetSystem();

    /// Lets time pass: every started device moves `frames` frames (of its own rate; with other rates, and
    /// with drift, in proportion to the first opened one's), period by period.
    void Step(std::uint64_t frames);

    /// Steps since the object was made, in frames.
    std::uint64_t GetTime() const;

    /// \name Faults
    /// They happen at the frame `at` of `GetTime`, at once when that has passed: between two frames of a
    /// `Step`. Devices are "a" and "b". Raise `CInvalidParameterException` "No such device".
    /// @{
    /// The device does not call its clients for `frames` frames and then says that it has lost once.
    void StallAt(std::uint64_t at, const wchar* device, std::uint64_t frames);
    /// The device is gone from the list, and lost for who uses it.
    void LoseAt(std::uint64_t at, const wchar* device);
    /// The device is there again.
    void ReturnAt(std::uint64_t at, const wchar* device);
    /// It is the default from then on; outputs that follow the default go there without losing a frame that
    /// the old device has not played.
    void SetDefaultAt(std::uint64_t at, const wchar* device);
    /// The device's clock runs faster by that many millionths, from then on; -100,000 to 100,000, beyond
    /// which it raises `CInvalidParameterException` "Drift must be -100000 to 100000 millionths".
    void SetDriftAt(std::uint64_t at, const wchar* device, std::int32_t millionths);
    /// @}

    /// The only format that the device takes from the next opening on: outputs and inputs convert.
    void SetDeviceFormat(const wchar* device, const TDataFormat_AudioPcm& format);

    /// What the device has played since the object was made, frames of all its openings, silence in gaps
    /// included: copies up to `size` bytes from `position` on, and returns how many.
    std::uint64_t GetPlayed(const wchar* device, std::uint64_t position, void* buffer,
                            std::uint64_t size) const;
    /// Bytes that the device has played.
    std::uint64_t GetPlayedSize(const wchar* device) const;
    /// Forgets what was played, so that long runs stay small; with `keeps` false nothing is kept from then
    /// on.
    void ForgetPlayed(const wchar* device, bool keeps = true);

    /// What the input of the device hears, in the format that the input is opened with; silence behind its
    /// end. Copied.
    void SetInput(const wchar* device, const void* frames, std::uint64_t size);

private:
    struct TData;
    TData* data_;
};

} // namespace vorlund
