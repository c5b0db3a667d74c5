// PNG: ISO/IEC 15948.
#pragma once

#include <cstdint>
#include <vector>

/// The file for a picture of `width` by `height` pixels of three bytes: red, green, blue. Both sizes are at
/// most 16,384. Raises `std::bad_alloc`.
std::vector<std::uint8_t> EncodePng(const std::vector<std::uint8_t>& rgb, std::uint32_t width,
                                    std::uint32_t height);
