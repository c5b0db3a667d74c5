#include "Placement.h"
#include "Surface.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace {

class CSurfaceGdi final : public CSurface {
public:
    explicit CSurfaceGdi(HWND window) : window_(window) {}

    bool Draw(const std::uint32_t* pixels, int width, int height) override {
        RECT client;
        if (!GetClientRect(window_, &client)) return false;
        const HDC target = GetDC(window_);
        if (!target) return false;
        // Nothing is inside a window that is an icon.
        if (client.right > 0 && client.bottom > 0) DrawInside(target, client, pixels, width, height);
        ReleaseDC(window_, target);
        return true;
    }

private:
    static void DrawInside(HDC target, const RECT& client, const std::uint32_t* pixels, int width,
                           int height) {
        const TPlace place = FitInto(width, height, client.right, client.bottom);
        const auto [before, after] = GetBars(place, client.right, client.bottom);
        for (const TPlace& bar : {before, after})
            if (bar.width > 0 && bar.height > 0)
                PatBlt(target, bar.x, bar.y, bar.width, bar.height, BLACKNESS);
        BITMAPINFO image{};
        image.bmiHeader.biSize = sizeof(image.bmiHeader);
        image.bmiHeader.biWidth = width;
        // Negative: rows from top to bottom.
        image.bmiHeader.biHeight = -height;
        image.bmiHeader.biPlanes = 1;
        image.bmiHeader.biBitCount = 32;
        image.bmiHeader.biCompression = BI_RGB;
        SetStretchBltMode(target, COLORONCOLOR);
        StretchDIBits(target, place.x, place.y, place.width, place.height, 0, 0, width, height, pixels,
                      &image, DIB_RGB_COLORS, SRCCOPY);
    }

    HWND window_;
};

} // namespace

std::unique_ptr<CSurface> CSurface::Create(void* handle) {
    return std::make_unique<CSurfaceGdi>(static_cast<HWND>(handle));
}
