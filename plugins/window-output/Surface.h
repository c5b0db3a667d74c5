// Where frames are drawn: the inside of a window of the system. One file Surface_<system>.cpp for each.
#pragma once

#include <cstdint>
#include <memory>

class CSurface {
public:
    /// Draws on the window `handle`. Null when that cannot be done.
    static std::unique_ptr<CSurface> Create(void* handle);

    CSurface() = default;
    CSurface(const CSurface&) = delete;
    CSurface& operator=(const CSurface&) = delete;
    virtual ~CSurface() = default;

    /// Shows an image as large as the inside of the window lets it be in its own shape, with black beside it.
    /// Pixels hold blue in the lowest byte, then green and red; rows go from top to bottom. Returns false
    /// when the window is gone.
    virtual bool Draw(const std::uint32_t* pixels, int width, int height) = 0;
};
