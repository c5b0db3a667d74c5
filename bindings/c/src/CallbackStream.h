// Streams whose bytes come from functions of the host.
#pragma once

#include "vorlund_c/stream.h"

namespace vorlund::capi {

/// A stream over callbacks with its handle in `*result`; a null format is for raw bytes. When it raises, no
/// callback comes.
void MakeCallbackStream(const vorlund_stream_callbacks* callbacks, void* user,
                        const vorlund_audio_format* format, vorlund_stream* result);

} // namespace vorlund::capi
