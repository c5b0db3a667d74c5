#include "Canvas.h"

#include "PngEncoder.h"

#include <stb/stb_easy_font.h>

#include <algorithm>

namespace {

// The font is 7 pixels high.
constexpr int kScale = 2;
constexpr std::size_t kMaxText = 64;

/// As the font draws it: four corners for each rectangle, from the upper left one clockwise.
struct TCorner {
    float x;
    float y;
    float z;
    std::uint32_t colour;
};
constexpr std::size_t kMaxRectangles = kMaxText * 64;

std::string Printable(const std::string& text) {
    std::string printable = text.substr(0, kMaxText);
    std::replace_if(
        printable.begin(), printable.end(), [](char unit) { return unit < ' ' || unit > '~'; }, ' ');
    return printable;
}

} // namespace

CCanvas::CCanvas(std::uint32_t width, std::uint32_t height, TColour ground)
    : width_(static_cast<int>(width)), height_(static_cast<int>(height)),
      rgb_(std::size_t{width} * height * 3) {
    Fill(0, 0, width_, height_, ground);
}

void CCanvas::Fill(int x, int y, int width, int height, TColour colour) {
    const int right = std::min(x + width, width_);
    const int bottom = std::min(y + height, height_);
    x = std::max(x, 0);
    for (int row = std::max(y, 0); row < bottom; ++row) {
        std::uint8_t* pixel = rgb_.data() + (std::size_t(row) * std::size_t(width_) + std::size_t(x)) * 3;
        for (int column = x; column < right; ++column) {
            *pixel++ = colour.red;
            *pixel++ = colour.green;
            *pixel++ = colour.blue;
        }
    }
}

void CCanvas::Text(int x, int y, const std::string& text, TColour colour) {
    std::vector<TCorner> corners(kMaxRectangles * 4);
    std::string printable = Printable(text);
    const int count = stb_easy_font_print(0, 0, printable.data(), nullptr, corners.data(),
                                          static_cast<int>(corners.size() * sizeof corners[0]));
    for (int i = 0; i < count; ++i) {
        const TCorner& first = corners[std::size_t(i) * 4];
        const TCorner& last = corners[std::size_t(i) * 4 + 2];
        const int left = static_cast<int>(first.x);
        const int top = static_cast<int>(first.y);
        Fill(x + left * kScale, y + top * kScale, (static_cast<int>(last.x) - left) * kScale,
             (static_cast<int>(last.y) - top) * kScale, colour);
    }
}

int CCanvas::GetTextWidth(const std::string& text) {
    std::string printable = Printable(text);
    return stb_easy_font_width(printable.data()) * kScale;
}

std::vector<std::uint8_t> CCanvas::ToPng() const {
    return EncodePng(rgb_, static_cast<std::uint32_t>(width_), static_cast<std::uint32_t>(height_));
}
