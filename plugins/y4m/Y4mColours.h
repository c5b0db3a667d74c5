// From luma and chroma to red, green and blue.
#pragma once

#include "Y4mHeader.h"

#include <cstdint>

/// Converts the planes of a frame to the words of PixelForm.h, by the equations of ITU-R BT.601,
/// rounded to nearest and cut to 0 to 255. A chroma sample colours each of its pixels alike. `pixels` may
/// have any alignment.
void ConvertY4mFrame(const TY4mHeader& header, const std::uint8_t* planes, std::uint8_t* pixels);
