// Output streams whose bytes go to functions of the host.
#pragma once

#include "vorlund_c/sink.h"

namespace vorlund::capi {

/// A stream over callbacks with its handle in `*result`. When it raises, no callback comes.
void MakeCallbackSink(const vorlund_sink_callbacks* callbacks, void* user, vorlund_sink* result);

} // namespace vorlund::capi
