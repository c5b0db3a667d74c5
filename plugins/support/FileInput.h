// What the decoders of files ask of their input.
#pragma once

#include <vorlund/DataFormat.h>
#include <vorlund/Stream.h>

inline bool HasPositions(vorlund::IInputStream& stream) {
    constexpr std::uint32_t kNeeded = vorlund::STREAM_CAPABILITY_SEEK | vorlund::STREAM_CAPABILITY_TELL;
    return (stream.GetCapabilities() & kNeeded) == kNeeded;
}

/// What has a format is no file any more.
inline bool IsDecoded(vorlund::IInputStream& stream) {
    return stream.GetFormat().id != vorlund::CId::Null();
}
