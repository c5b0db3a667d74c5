// JPEG by libjpeg-turbo.
#pragma once

#include "Picture.h"
#include "PictureSource.h"

#include <span>

bool IsJpeg(std::span<const std::uint8_t> head);

/// The picture of a file that begins as JPEG. One that ends early, or is damaged, comes with what the library
/// makes of it, and a remark says so. Raises `CDataFormatException` "Damaged or unsupported JPEG file",
/// "Unsupported colours in JPEG file" and those of Picture.h, and what the stream raises.
TPicture ReadJpeg(CPictureSource& source);
