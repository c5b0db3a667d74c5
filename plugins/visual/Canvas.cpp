#include "Canvas.h"

#include <stb/stb_easy_font.h>

#include <algorithm>
#include <array>
#include <string>

namespace {

/// As the font draws it: four corners for each rectangle, from the upper left one clockwise.
struct TCorner {
    float x;
    float y;
    float z;
    std::uint32_t colour;
};
constexpr std::size_t kMaxText = 16;
constexpr std::size_t kMaxRectangles = kMaxText * 64;

/// The font takes text that it could change.
std::string Cut(std::string_view text) {
    return std::string(text.substr(0, kMaxText));
}

} // namespace

void CCanvas::Fill(const TArea& area, std::uint32_t colour) {
    const int left = std::max(area.x, 0);
    const int right = std::min(area.x + area.width, width_);
    const int bottom = std::min(area.y + area.height, height_);
    if (left >= right) return;
    for (int y = std::max(area.y, 0); y < bottom; ++y) {
        std::uint32_t* const row = GetRow(y);
        std::fill(row + left, row + right, ToPixel(colour));
    }
}

void CCanvas::Text(int x, int y, std::string_view text, int scale, std::uint32_t colour) {
    std::array<TCorner, kMaxRectangles * 4> corners;
    std::string copy = Cut(text);
    const int count =
        stb_easy_font_print(0, 0, copy.data(), nullptr, corners.data(), static_cast<int>(sizeof corners));
    for (int i = 0; i < count; ++i) {
        const TCorner& first = corners[static_cast<std::size_t>(i) * 4];
        const TCorner& last = corners[static_cast<std::size_t>(i) * 4 + 2];
        const int left = static_cast<int>(first.x);
        const int top = static_cast<int>(first.y);
        Fill({x + left * scale, y + top * scale, (static_cast<int>(last.x) - left) * scale,
              (static_cast<int>(last.y) - top) * scale},
             colour);
    }
}

int CCanvas::GetTextWidth(std::string_view text, int scale) {
    std::string copy = Cut(text);
    return stb_easy_font_width(copy.data()) * scale;
}
