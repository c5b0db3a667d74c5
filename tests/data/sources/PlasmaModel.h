/// \file
/// The plasma picture once more, pixel by pixel as it is defined.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace vorlund::test {

/// The wave table with the C library's sine.
inline std::vector<int> PlasmaWave() {
    std::vector<int> wave(256);
    for (int i = 0; i < 256; ++i) {
        const auto angle = static_cast<float>(i * 3.1415927410125732 / 128.0);
        wave[static_cast<std::size_t>(i)] =
            static_cast<int>((std::sin(static_cast<double>(angle)) + 1.0) * 127.0);
    }
    return wave;
}

inline std::vector<std::uint32_t> PlasmaFrame(std::uint32_t width, std::uint32_t height, std::uint32_t t) {
    static const std::vector<int> T = PlasmaWave();
    std::vector<std::uint32_t> pixels;
    pixels.reserve(std::size_t{width} * height);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const int a = T[((y >> 1) + x - t) & 255] - static_cast<int>(x >> 1);
            const int b = T[((x >> 1) + (t & 255) * 2 - y) & 255];
            const int c = T[(t + 2 * y) & 255];
            const int v = T[static_cast<std::size_t>((a + b + c) & 255)];
            const int red = std::min(v * 3 / 2, 255);
            const int green = std::min(v * 5 / 2, 255);
            const int blue = std::min(v, 255);
            pixels.push_back(0xFF000000U + static_cast<std::uint32_t>(red * 65536 + green * 256 + blue));
        }
    }
    return pixels;
}

} // namespace vorlund::test
