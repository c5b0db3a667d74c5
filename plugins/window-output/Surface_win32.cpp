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
        BITMAPINFO image{};
        image.bmiHeader.biSize = sizeof(image.bmiHeader);
        image.bmiHeader.biWidth = width;
        // Negative: rows from top to bottom.
        image.bmiHeader.biHeight = -height;
        image.bmiHeader.biPlanes = 1;
        image.bmiHeader.biBitCount = 32;
        image.bmiHeader.biCompression = BI_RGB;
        SetStretchBltMode(target, COLORONCOLOR);
        StretchDIBits(target, 0, 0, client.right, client.bottom, 0, 0, width, height, pixels, &image,
                      DIB_RGB_COLORS, SRCCOPY);
        ReleaseDC(window_, target);
        return true;
    }

private:
    HWND window_;
};

} // namespace

std::unique_ptr<CSurface> CSurface::Create(void* handle) {
    return std::make_unique<CSurfaceGdi>(static_cast<HWND>(handle));
}
