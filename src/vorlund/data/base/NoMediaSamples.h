// The refusal of media samples, which most streams do not read.
#pragma once

#include <vorlund/Exception.h>
#include <vorlund/MediaSample.h>

namespace vorlund {

/// Raises `CNullPtrException` from `sampleIsNull` for null, else `CInvalidParameterException` from
/// `unsupported`.
[[noreturn]] inline void RefuseMediaSample(const IMediaSample* sample, const TFailure& sampleIsNull,
                                           const TFailure& unsupported) {
    if (!sample) Raise<CNullPtrException>(sampleIsNull);
    Raise<CInvalidParameterException>(unsupported);
}

} // namespace vorlund
