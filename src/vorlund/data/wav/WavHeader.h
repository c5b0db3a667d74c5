// Everything of a WAV file before its sound.
#pragma once

#include "vorlund/data/wav/WavDescription.h"

#include <cstdint>

namespace vorlund::wav {

/// The header of a file whose sound grows. What it holds stays at its place, whatever the sizes are.
class CHeader {
public:
    /// \param hasRoom64     room is kept for sizes of 64 bits
    /// \param metadata      chunks
    /// \param metadataRoom  bytes for them and for what may replace them; not 1 to 7 more than they have
    CHeader(const TWavWriterFormat& format, bool hasRoom64, const riff::TBytes& metadata,
            std::uint64_t metadataRoom);

    /// Bytes of the header.
    std::uint64_t GetSize() const;
    /// Whether `Make` can say these sizes.
    bool CanHold(std::uint64_t dataSize, std::uint64_t behind) const;
    /// \param dataSize  bytes of sound
    /// \param behind    bytes of chunks behind the sound and its padding
    riff::TBytes Make(std::uint64_t dataSize, std::uint64_t behind) const;

    /// Puts other metadata into the room; false when they do not fit, which then stays free.
    bool Replace(const riff::TBytes& metadata);

private:
    std::uint64_t GetRiffSize(std::uint64_t dataSize, std::uint64_t behind) const;

    bool hasRoom64_;
    std::uint32_t blockSize_;
    bool isFloat_;
    riff::TBytes description_;
    riff::TBytes metadata_;
    std::uint64_t room_;
};

/// The most bytes of sound of a file, so that all positions are possible.
inline constexpr std::uint64_t kMaxDataSize = std::uint64_t{1} << 62;

/// A free chunk of `size` bytes in all: 0, or 8 and more.
void AppendFree(riff::CFields& fields, std::uint64_t size);

} // namespace vorlund::wav
