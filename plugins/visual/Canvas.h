// Drawing on a picture: rows of pixels from top to bottom. What lies outside is left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// With an alpha of 255.
constexpr std::uint32_t ToPixel(std::uint32_t colour) {
    return colour | 0xFF000000;
}

/// `part` of 256 of the first colour, and the rest of the second.
constexpr std::uint32_t Mix(std::uint32_t first, std::uint32_t second, std::uint32_t part) {
    constexpr std::uint32_t kOuter = 0x00FF00FF;
    constexpr std::uint32_t kInner = 0x0000FF00;
    const std::uint32_t rest = 256 - part;
    const std::uint32_t outer = ((first & kOuter) * part + (second & kOuter) * rest) >> 8 & kOuter;
    const std::uint32_t inner = ((first & kInner) * part + (second & kInner) * rest) >> 8 & kInner;
    return ToPixel(outer | inner);
}

/// A part of a picture, in pixels.
struct TArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

class CCanvas {
public:
    CCanvas(std::uint32_t* pixels, int width, int height) : pixels_(pixels), width_(width), height_(height) {}

    int GetWidth() const { return width_; }
    int GetHeight() const { return height_; }
    /// A row, which is there.
    std::uint32_t* GetRow(int y) {
        return pixels_ + static_cast<std::size_t>(y) * static_cast<std::size_t>(width_);
    }

    void Fill(const TArea& area, std::uint32_t colour);

    /// ASCII, from its upper left corner, each dot of the letters as a square of `scale` pixels.
    void Text(int x, int y, std::string_view text, int scale, std::uint32_t colour);
    static int GetTextWidth(std::string_view text, int scale);
    static constexpr int GetTextHeight(int scale) { return 7 * scale; }

private:
    std::uint32_t* pixels_;
    int width_;
    int height_;
};
