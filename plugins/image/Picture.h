// A decoded picture, and how large one may be.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

struct TPicture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Blue, green, red and alpha of each pixel; rows from top to bottom without padding.
    std::vector<std::uint8_t> pixels;
};

constexpr std::size_t kPixelSize = 4;

/// The format records count the bytes of a picture in 32 bits.
constexpr std::uint64_t kMaxPixels = (std::uint64_t{1} << 32) / (8 * kPixelSize) - 1;

/// A picture of at most this many pixels is decoded whatever the size of its file. A larger one must have a
/// file that can hold it, before there is memory for it.
constexpr std::uint64_t kMaxUnprovenPixels = std::uint64_t{4} << 20;

/// Raises `CDataFormatException` "Picture is too large" unless `width` times `height` pixels are at most
/// `kMaxPixels`.
void RequirePossibleSize(std::uint32_t width, std::uint32_t height);

/// Raises `CDataFormatException` "Picture is larger than its file can hold" when the picture is larger than
/// `kMaxUnprovenPixels` and needs a file of more than `length` bytes.
void RequireHeldSize(std::uint32_t width, std::uint32_t height, std::uint64_t needed, std::int64_t length);

/// Tells the report of the search what a library objects to, or has repaired. ASCII.
void NoteObjection(const char* library, const char* text);
void NoteRepair(const char* library, const char* text);
