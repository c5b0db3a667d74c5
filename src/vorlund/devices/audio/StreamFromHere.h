// A stream from where it is: filters go to the beginning of what they are connected to.
#pragma once

#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

#include <cstddef>
#include <vector>

namespace vorlund {

/// A stream in the format `format` that delivers `bytes` and then what `source`, which may be empty, delivers
/// from its position on. It has no positions itself.
CRefPtr<IInputStream> MakeStreamFromHere(const CRefPtr<IInputStream>& source,
                                         const TDataFormat_AudioPcm& format,
                                         std::vector<std::byte> bytes = {});

} // namespace vorlund
