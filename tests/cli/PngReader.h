/// \file
/// The reader of PNG files of stb, in each test that includes this, and once where several are compiled
/// together.
#pragma once

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_NO_STDIO
#include <stb/stb_image.h>
