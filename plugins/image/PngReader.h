// PNG by libpng.
#pragma once

#include "Picture.h"
#include "PictureSource.h"

#include <span>

bool IsPng(std::span<const std::uint8_t> head);

/// The picture of a file that begins as PNG. One that ends early, or is damaged behind its first row, comes
/// with what there is and zeros for the rest, and a remark says so. Raises `CDataFormatException` "Damaged
/// PNG file" and those of Picture.h, and what the stream raises.
TPicture ReadPng(CPictureSource& source);
