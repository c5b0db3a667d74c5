// Formats and latencies of outputs and inputs.
#pragma once

#include <vorlund/AudioConversion.h>
#include <vorlund/AudioOutput.h>
#include <vorlund/AudioPort.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resampler.h>
#include <vorlund/Stream.h>

#include <cstdint>

namespace vorlund {

/// What an output and an input raise for the same reasons, each in its own name.
struct TAudioFailures {
    TFailure format;
    TFailure latency;
    TFailure device;
    TFailure resampler;
    TFailure thread;
};

/// Raises the failures of the format and of the latency.
void CheckAudioWish(const TDataFormat_AudioPcm& format, double latency, const TAudioFailures& failures);

/// What to ask a port for.
TAudioPortFormat MakePortWish(const TDataFormat_AudioPcm& format, double latency);

/// The format that a port moves; raises the failure of the device when it is an impossible one.
TDataFormat_AudioPcm GetPortFormat(const TAudioPortFormat& format, const TAudioFailures& failures);

/// How many frames a ring between the port and the library has room for.
std::size_t GetRingFrames(const TAudioPortFormat& format);

/// Whether samples and channels are the same: the rate may differ.
bool IsSameLayout(const TDataFormat_AudioPcm& one, const TDataFormat_AudioPcm& other);
bool IsSameFormat(const TDataFormat_AudioPcm& one, const TDataFormat_AudioPcm& other);

/// Brings frames in buffers to other samples and channels, at true scale and clipped. Allocates nothing.
class CFrameConversion {
public:
    CFrameConversion() = default;
    CFrameConversion(const TDataFormat_AudioPcm& from, const TDataFormat_AudioPcm& to);
    /// Bytes of a frame to be converted.
    std::size_t GetInputSize() const { return from_.GetBlockSize(); }
    void Convert(void* to, const void* from, std::size_t frames) const;

private:
    TDataFormat_AudioPcm from_;
    TDataFormat_AudioPcm to_;
    TMixMatrix mix_;
};

/// Whether a stream has PCM that can be brought to other formats.
bool IsPlayable(const TDataFormat& format);

/// A new resampler to that rate, or the failure.
CRefPtr<IResampler> CreateResampler(std::uint32_t rate, const TFailure& failure);

/// A stream that delivers what `source` does, in the format `to`; `source` itself where that has it. It
/// starts from the position that `source` has. Raises `failure` without a resampler, and what filters raise.
CRefPtr<IInputStream> BringToFormat(const CRefPtr<IInputStream>& source, const TDataFormat_AudioPcm& to,
                                    const TFailure& failure);

} // namespace vorlund
