// A stream over a function.
#pragma once

#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

#include <cstdint>
#include <functional>

namespace vorlund {

/// What `IInputStream::Read` does.
using TReadFunction = std::function<std::uint64_t(void* buffer, std::uint64_t size)>;

/// A stream in the format `format`, without positions, that delivers what `read` does.
CRefPtr<IInputStream> MakeReadStream(const TDataFormat_AudioPcm& format, TReadFunction read);

} // namespace vorlund
