// A picture that is drawn: rectangles and short texts on a ground of one colour.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct TColour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};

class CCanvas {
public:
    /// Texts are so high, and so wide for each letter at most.
    static constexpr int kTextHeight = 16;

    CCanvas(std::uint32_t width, std::uint32_t height, TColour ground);

    /// What lies outside is left out.
    void Fill(int x, int y, int width, int height, TColour colour);
    void Point(int x, int y, TColour colour) { Fill(x, y, 1, 1, colour); }

    /// ASCII, from its upper left corner; others characters are blank.
    void Text(int x, int y, const std::string& text, TColour colour);
    static int GetTextWidth(const std::string& text);

    /// Raises `std::bad_alloc`.
    std::vector<std::uint8_t> ToPng() const;

private:
    const int width_;
    const int height_;
    std::vector<std::uint8_t> rgb_;
};
