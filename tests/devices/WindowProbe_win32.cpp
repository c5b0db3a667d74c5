#include "devices/WindowProbe.h"

#include <vorlund/WindowEvents.h>

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

void ResizeWindowByUser(void* handle, int width, int height) {
    SetWindowPos(ToWindow(handle), nullptr, 0, 0, width, height,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_ASYNCWINDOWPOS);
}

namespace {

void PostKey(void* handle, std::uint32_t key, bool isDown) {
    constexpr struct {
        std::uint32_t key;
        WPARAM virtualKey;
    } kNamed[] = {
        {WINDOW_KEY_ESCAPE, VK_ESCAPE},
        {WINDOW_KEY_ENTER, VK_RETURN},
        {WINDOW_KEY_TAB, VK_TAB},
        {WINDOW_KEY_BACKSPACE, VK_BACK},
        {WINDOW_KEY_DELETE, VK_DELETE},
        {WINDOW_KEY_LEFT, VK_LEFT},
        {WINDOW_KEY_UP, VK_UP},
        {WINDOW_KEY_RIGHT, VK_RIGHT},
        {WINDOW_KEY_DOWN, VK_DOWN},
        {WINDOW_KEY_HOME, VK_HOME},
        {WINDOW_KEY_END, VK_END},
        {WINDOW_KEY_PAGE_UP, VK_PRIOR},
        {WINDOW_KEY_PAGE_DOWN, VK_NEXT},
        {WINDOW_KEY_INSERT, VK_INSERT},
        {WINDOW_KEY_F1, VK_F1},
        {WINDOW_KEY_F12, VK_F12},
        {'+', VK_ADD},
    };
    WPARAM virtualKey = 0;
    for (const auto& row : kNamed)
        if (row.key == key) virtualKey = row.virtualKey;
    if (virtualKey == 0) virtualKey = VkKeyScanW(static_cast<wchar>(key)) & 0xFF;
    const UINT scan = MapVirtualKeyW(static_cast<UINT>(virtualKey), MAPVK_VK_TO_VSC);
    // Bits 30 and 31 of a release: it was down, and goes up.
    PostMessageW(ToWindow(handle), isDown ? WM_KEYDOWN : WM_KEYUP, virtualKey,
                 static_cast<LPARAM>(1 | scan << 16 | (isDown ? 0 : 3U << 30)));
}

} // namespace

void PressKey(void* handle, std::uint32_t key) {
    PostKey(handle, key, true);
}

void ReleaseKey(void* handle, std::uint32_t key) {
    PostKey(handle, key, false);
}

void SpoilWindow(void* handle) {
    const HDC window = GetDC(ToWindow(handle));
    PatBlt(window, 0, 0, 10000, 10000, WHITENESS);
    ReleaseDC(ToWindow(handle), window);
    InvalidateRect(ToWindow(handle), nullptr, FALSE);
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