#include "PngEncoder.h"

#include <algorithm>
#include <cstdlib>
#include <new>

// Nothing is never asked for.
#define STBIW_MALLOC(size) std::malloc(std::max<std::size_t>(size, 1))
#define STBIW_REALLOC(block, size) std::realloc(block, size)
#define STBIW_FREE(block) std::free(block)
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace {

void Append(void* png, void* bytes, int size) {
    const auto* const first = static_cast<const std::uint8_t*>(bytes);
    auto& target = *static_cast<std::vector<std::uint8_t>*>(png);
    target.insert(target.end(), first, first + size);
}

} // namespace

std::vector<std::uint8_t> EncodePng(const std::vector<std::uint8_t>& rgb, std::uint32_t width,
                                    std::uint32_t height) {
    std::vector<std::uint8_t> png;
    if (rgb.empty()) return png;
    const int columns = static_cast<int>(width);
    if (!stbi_write_png_to_func(&Append, &png, columns, static_cast<int>(height), 3, rgb.data(), columns * 3))
        throw std::bad_alloc();
    return png;
}
