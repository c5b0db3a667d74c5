/// \file
/// What tests of outputs and inputs share.
#pragma once

#include "data/file/TemporaryFolder.h"
#include "data/wav/WavFile.h"
#include "support/Failures.h"
#include "support/Streams.h"

#include <vorlund/AudioDevices.h>
#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>

#include <cstdint>

namespace vorlund::test {

inline constexpr TDataFormat_AudioPcm kSixteenBits{SAMPLE_FORMAT_16BIT, 2, 48000};

/// All sample formats, with numbers of channels that are different too.
inline constexpr TDataFormat_AudioPcm kEachFormat[] = {{SAMPLE_FORMAT_8BIT, 1, 8000},
                                                       {SAMPLE_FORMAT_16BIT, 2, 48000},
                                                       {SAMPLE_FORMAT_32BIT, 6, 44100},
                                                       {SAMPLE_FORMAT_FLOAT, 3, 96000},
                                                       {SAMPLE_FORMAT_16BIT, 8, 768000}};

/// Bytes of `frames` frames, that repeat late; floats are those that are none too.
inline TBytes MakeSound(const TDataFormat_AudioPcm& format, std::size_t frames, std::uint32_t seed = 1) {
    TBytes bytes(frames * format.GetBlockSize());
    std::uint32_t state = seed * 2654435761u + 1;
    for (auto& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

inline CRefPtr<CFaultyInputStream> MakeStream(const TDataFormat_AudioPcm& format, const TBytes& bytes) {
    auto stream = Make<CFaultyInputStream>();
    stream->bytes = bytes;
    stream->format = format;
    return stream;
}

inline TBytes Joined(TBytes one, const TBytes& other) {
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

inline TBytes Part(const TBytes& bytes, std::size_t begin, std::size_t end) {
    return {bytes.begin() + static_cast<std::ptrdiff_t>(begin),
            bytes.begin() + static_cast<std::ptrdiff_t>(end)};
}

} // namespace vorlund::test
