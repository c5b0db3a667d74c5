// A stream from where it is: filters go to the beginning of what they are connected to.
#pragma once

#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

namespace vorlund {

/// A stream that delivers what `source` delivers from its position on, and has no positions itself.
CRefPtr<IInputStream> MakeStreamFromHere(const CRefPtr<IInputStream>& source);

} // namespace vorlund
