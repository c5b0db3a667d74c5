// The last page of an Ogg file.
#pragma once

#include "VirtualFile.h"

#include <cstdint>

/// How many frames of the stream that ends `file` the last page brings, as its number and that of the page
/// before tell; -1 when this cannot be found.
std::int64_t CountFramesOfLastPage(CVirtualFile& file);
