// Filling a buffer of any size with converted frames.
#pragma once

#include "vorlund/data/base/Lending.h"
#include "vorlund/data/filters/PcmStep.h"

#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilterImpl.h>

#include <cstddef>
#include <cstdint>

namespace vorlund {

/// A second base of input streams that fill a buffer in one call.
class IFrameInput {
public:
    /// As the function of the same name in <vorlund/AudioPcmConverters.h>.
    virtual std::uint64_t ReadFrames(void* buffer, std::uint64_t size) = 0;

protected:
    ~IFrameInput() = default;
};

namespace pcm {

/// One call of `ReadFrames` of a converter. The stream may use or destroy that converter, which ends the call
/// with what there is.
class CFrameFilling {
public:
    /// \param lender  the stream if it lends, else null
    CFrameFilling(IInputStream& stream, ILendingInput* lender, CFilterCalls& calls, const CStep& step)
        : call_(calls), step_(step), lender_(lender), stream_(CRefPtr<IInputStream>::Share(&stream)) {}

    std::uint64_t Fill(std::byte* buffer, std::uint64_t size);

private:
    bool FillLent(std::byte* buffer, std::uint64_t frames);
    bool FillRead(std::byte* buffer, std::uint64_t frames);
    std::uint64_t ReadSource(std::byte* bytes, std::uint64_t size);

    // Taken from the converter before the stream is touched, which may end it even when it gets a reference.
    const CFilterCalls::CCall call_;
    const CStep step_;
    ILendingInput* const lender_;
    const CRefPtr<IInputStream> stream_;
    /// Bytes in the buffer so far.
    std::uint64_t done_ = 0;
};

} // namespace pcm
} // namespace vorlund
