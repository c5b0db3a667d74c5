#include "devices/WindowProbe.h"

#include <windows.h>

namespace vorlund::test {
namespace {

HWND ToWindow(void* handle) {
    return static_cast<HWND>(handle);
}

} // namespace

bool CanShowWindows() {
    return GetDesktopWindow() != nullptr;
}

void* FindWindowByTitle(const wstring& title) {
    return FindWindowW(nullptr, title.c_str());
}

std::optional<TWindowView> LookAtWindow(void* handle) {
    RECT client{};
    if (!IsWindow(ToWindow(handle)) || !GetClientRect(ToWindow(handle), &client)) return {};
    wchar_t title[256] = {};
    GetWindowTextW(ToWindow(handle), title, 256);
    return TWindowView{title, static_cast<int>(client.right), static_cast<int>(client.bottom)};
}

void CloseWindowByUser(void* handle) {
    PostMessageW(ToWindow(handle), WM_CLOSE, 0, 0);
}

std::optional<TWindowPixels> GetWindowPixels(void* handle) {
    const auto view = LookAtWindow(handle);
    if (!view) return {};
    TWindowPixels picture{view->width, view->height, {}};
    picture.pixels.resize(static_cast<std::size_t>(view->width) * static_cast<std::size_t>(view->height));
    const HDC window = GetDC(ToWindow(handle));
    const HDC memory = CreateCompatibleDC(window);
    const HBITMAP bitmap = CreateCompatibleBitmap(window, view->width, view->height);
    const HGDIOBJ former = SelectObject(memory, bitmap);
    BOOL isCopied = BitBlt(memory, 0, 0, view->width, view->height, window, 0, 0, SRCCOPY);
    SelectObject(memory, former);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = view->width;
    // Negative: rows from top to bottom.
    info.bmiHeader.biHeight = -view->height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    isCopied = isCopied && GetDIBits(memory, bitmap, 0, static_cast<UINT>(view->height),
                                     picture.pixels.data(), &info, DIB_RGB_COLORS) == view->height;
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(ToWindow(handle), window);
    if (!isCopied) return {};
    return picture;
}

} // namespace vorlund::test