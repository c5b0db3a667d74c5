/// \file
/// A picture of a window.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

namespace vorlund::test {

struct TWindowPixels {
    int width = 0;
    int height = 0;
    /// Rows from top to bottom, blue in the lowest byte, then green and red.
    std::vector<std::uint32_t> pixels;

    /// Red << 16 | green << 8 | blue.
    std::uint32_t At(int x, int y) const {
        return pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                         static_cast<std::size_t>(x)) &
               0xFFFFFF;
    }
};

/// Writes a portable pixmap (netpbm, "P6").
inline bool SavePixmap(const TWindowPixels& picture, const std::filesystem::path& file) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    out << "P6\n" << picture.width << ' ' << picture.height << "\n255\n";
    for (const std::uint32_t pixel : picture.pixels) {
        const char bytes[] = {static_cast<char>(pixel >> 16), static_cast<char>(pixel >> 8),
                              static_cast<char>(pixel)};
        out.write(bytes, sizeof bytes);
    }
    return out.good();
}

} // namespace vorlund::test
