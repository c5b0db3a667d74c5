// Where an image is drawn in a window of another shape.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>

struct TPlace {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// The largest place of the image's shape inside, in the middle of what is left over. All sizes are at
/// least 1.
inline TPlace FitInto(int width, int height, int insideWidth, int insideHeight) {
    const auto scale = [](std::int64_t length, std::int64_t by, std::int64_t from) {
        return static_cast<int>(std::max<std::int64_t>((2 * length * by + from) / (2 * from), 1));
    };
    TPlace place{0, 0, insideWidth, insideHeight};
    if (std::int64_t{insideWidth} * height <= std::int64_t{insideHeight} * width)
        place.height = std::min(scale(height, insideWidth, width), insideHeight);
    else
        place.width = std::min(scale(width, insideHeight, height), insideWidth);
    place.x = (insideWidth - place.width) / 2;
    place.y = (insideHeight - place.height) / 2;
    return place;
}

/// What the place leaves of the inside: two bars, at the sides, or above and below; they may be empty.
inline std::pair<TPlace, TPlace> GetBars(const TPlace& place, int insideWidth, int insideHeight) {
    const int right = place.x + place.width;
    const int bottom = place.y + place.height;
    if (place.width < insideWidth)
        return {{0, 0, place.x, insideHeight}, {right, 0, insideWidth - right, insideHeight}};
    return {{0, 0, insideWidth, place.y}, {0, bottom, insideWidth, insideHeight - bottom}};
}
