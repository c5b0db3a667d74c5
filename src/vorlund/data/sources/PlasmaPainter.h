// The picture of the plasma generator.
#pragma once

#include <cstdint>

namespace vorlund {

/// Fills `width` x `height` pixels, 32-bit words at any alignment, with frame `time` of the plasma.
///
/// With the wave table T, whose entry i is (sin(i x pi / 128) + 1) x 127 truncated, the value of a pixel is
/// v = T[(a + b + c) & 255] of
///   a = T[((y >> 1) + x - time) & 255] - (x >> 1)
///   b = T[((x >> 1) + 2 x time - y) & 255]
///   c = T[(time + 2 x y) & 255]
/// and its colour is red v x 3 / 2 and green v x 5 / 2, at most 255 each, blue v, alpha 255.
void PaintPlasma(void* pixels, std::uint32_t width, std::uint32_t height, std::uint32_t time);

} // namespace vorlund
