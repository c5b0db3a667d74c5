// Frames that were written at another rate than the device's, on their way through the resampler.
#pragma once

#include "vorlund/devices/audio/AudioFormats.h"
#include "vorlund/devices/audio/FrameRing.h"
#include "vorlund/devices/audio/ReadStream.h"

#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

namespace vorlund {

// A resampler reads blocks, and turns the end of its source into an end of the sound. So what is written
// becomes sounds of its own, segments: one ends where a stream follows, where somebody waits for the end, and
// where the device runs out of frames while too few were written for another block.
class CWriteQueue {
public:
    /// Room for `frames` frames of `from`, which become frames of `to`. `read` delivers bytes of the present
    /// segment, or waits, and gives 0 at its end.
    CWriteQueue(const TDataFormat_AudioPcm& from, const TDataFormat_AudioPcm& to,
                const CRefPtr<IInputStreamFilter>& resampler, std::size_t frames, TReadFunction read);

    /// Bytes that were written.
    CFrameRing& Bytes() { return bytes_; }

    /// Whether one was begun and not read to its end.
    bool IsInSegment() const { return isInSegment_; }
    void BeginSegment() { isInSegment_ = true; }
    void EndSegment() { isInSegment_ = false; }

    /// Begins to read, at the beginning of a segment. Raises what filters raise.
    void Connect();
    /// Frames of the device, up to the end of the segment.
    IInputStream& GetResult() { return *chain_.GetResult(); }

    /// Drops the streams, which only counts for the thread that has read them.
    void Reset();

private:
    CFrameRing bytes_;
    bool isInSegment_ = false;
    CFormatChain chain_;
    CRefPtr<IInputStream> source_;
};

} // namespace vorlund
