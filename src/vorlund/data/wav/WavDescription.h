// The "fmt " chunk.
#pragma once

#include "vorlund/data/wav/RiffFields.h"

#include <vorlund/WavWriter.h>

namespace vorlund::wav {

/// Bytes of a sample; 0 for an unknown format.
std::uint32_t GetSampleSize(TWavSampleFormat format);

/// The chunk. The format is possible.
riff::TBytes MakeDescription(const TWavWriterFormat& format);

/// What a "fmt " chunk says that matters to the sizes.
struct TDescription {
    std::uint32_t blockSize = 0;
    /// Whether a frame has one block, as with PCM and float, and not with compressed formats.
    bool isPlain = false;
};

/// \param body  the data of the chunk, at least `kMinDescription` bytes
TDescription ReadDescription(const riff::TBytes& body);

inline constexpr std::uint32_t kMinDescription = 16;

} // namespace vorlund::wav
