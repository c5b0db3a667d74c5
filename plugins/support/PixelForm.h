// How the decoders of pictures and videos lay out pixels, and the program shows them.
#pragma once

#include <vorlund/DataFormat.h>

/// 32-bit words with blue in the lowest byte, then green, red and alpha: what the library's generators of
/// video announce too. `FORMAT_A8R8G8B8` has the opposite order.
constexpr vorlund::TPixelFormat kPixelForm{.bitsPerPixel = 32,
                                           .alphaBits = 8,
                                           .alphaShift = 24,
                                           .redBits = 8,
                                           .redShift = 16,
                                           .greenBits = 8,
                                           .greenShift = 8,
                                           .blueBits = 8,
                                           .blueShift = 0};
