// The heads of MPEG audio frames.
#pragma once

#include "VirtualFile.h"

#include <cstdint>
#include <optional>

/// What the four bytes of a frame's head say.
struct TMpegFrame {
    /// The head itself, the first byte highest.
    std::uint32_t head = 0;
    int layer = 0;
    /// MPEG 2 and 2.5, whose frames are half as long.
    bool isLowRate = false;
    bool isMono = false;
    std::uint32_t samplesPerSec = 0;
    /// Frames of sound in it.
    std::uint32_t samples = 0;
    /// Bytes, the head included.
    std::uint32_t size = 0;

    /// True when both belong to one stream: equal version, layer, rate.
    bool IsLike(const TMpegFrame& other) const;
    /// Where an encoder puts its record into the first frame of layer III, from the head on.
    std::uint32_t GetInfoOffset() const {
        return 4u + (isLowRate ? (isMono ? 9u : 17u) : (isMono ? 17u : 32u));
    }
};

inline constexpr int kMpegHeadSize = 4;

/// Nothing when the bytes are no head, or that of a frame without a known size.
std::optional<TMpegFrame> ParseMpegHead(const std::uint8_t* bytes);

/// True when a frame begins at `position` and another one of the same stream, or the end, follows it.
bool IsMpegAt(CVirtualFile& file, std::int64_t position);
