// The first line of a YUV4MPEG2 file, as the manual page yuv4mpeg(5) of mjpegtools describes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// How the samples of a frame lie in the file: planes of 8 bits, luma, then the two of chroma, then alpha. A
/// chroma sample is that of 2^chromaShiftX times 2^chromaShiftY pixels.
struct TY4mLayout {
    std::string_view name;
    bool hasChroma = true;
    unsigned int chromaShiftX = 0;
    unsigned int chromaShiftY = 0;
    bool hasAlpha = false;
};

struct TY4mHeader {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    float frameRate = 0;
    TY4mLayout layout;
    /// Luma and chroma from 0 to 255 instead of the studio's 16 to 235 and 240.
    bool isFullRange = false;
    bool isInterlaced = false;

    std::uint64_t GetPixels() const { return std::uint64_t{width} * height; }
    /// Bytes of the planes of a frame.
    std::uint64_t GetFrameSize() const;
    std::uint32_t GetChromaWidth() const;
    std::uint32_t GetChromaHeight() const;
};

/// With what such a file begins.
constexpr std::string_view kY4mSignature = "YUV4MPEG2 ";

/// The longest line, that of a frame too, with its end.
constexpr std::size_t kMaxY4mLine = 1024;

/// The format records count the bytes of a frame, four for each pixel, in 32 bits.
constexpr std::uint64_t kMaxY4mPixels = (std::uint64_t{1} << 32) / 32 - 1;

/// Reads the line, which begins with the signature and has no "\n". Raises `CDataFormatException` "Invalid
/// YUV4MPEG2 header", "Unsupported colour space" and "Frame is too large", with the value in the report of
/// the search.
TY4mHeader ParseY4mHeader(std::string_view line);
