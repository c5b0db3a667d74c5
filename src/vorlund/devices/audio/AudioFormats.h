// Formats and latencies of outputs and inputs.
#pragma once

#include <vorlund/AudioConversion.h>
#include <vorlund/AudioOutput.h>
#include <vorlund/AudioPort.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>

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

/// A new resampler between the rates of two formats, empty where these are the same, or the failure.
CRefPtr<IInputStreamFilter> CreateResampler(const TDataFormat_AudioPcm& from, const TDataFormat_AudioPcm& to,
                                            const TFailure& failure);

/// The filters that bring a stream from one format to another: none where the formats are the same.
class CFormatChain {
public:
    /// Takes what `CreateResampler` gives for the two formats. Raises what the making of filters raises.
    CFormatChain(const TDataFormat_AudioPcm& from, const TDataFormat_AudioPcm& to,
                 const CRefPtr<IInputStreamFilter>& resampler);

    /// Begins to read `source`, which has the format that was told and no positions. Raises what the filters
    /// raise.
    void Connect(const CRefPtr<IInputStream>& source);
    /// The end of the chain: `source` itself without a filter.
    const CRefPtr<IInputStream>& GetResult() const { return result_; }
    void Reset();

private:
    CRefPtr<IInputStreamFilter> resampler_;
    CRefPtr<IInputStreamFilter> converter_;
    CRefPtr<IInputStream> result_;
};

/// A stream that delivers what `source`, which has the format `from`, does from its position on, in the
/// format `to`; `source` itself where the two are the same. Raises `failure` without a resampler, and what
/// filters raise.
CRefPtr<IInputStream> BringToFormat(const CRefPtr<IInputStream>& source, const TDataFormat_AudioPcm& from,
                                    const TDataFormat_AudioPcm& to, const TFailure& failure);

} // namespace vorlund
