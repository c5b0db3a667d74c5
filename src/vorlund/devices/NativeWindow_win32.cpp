#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/devices/NativeWindow.h"
#include "vorlund/devices/WindowEvents.h"
#include "vorlund/devices/WindowKeys_win32.h"

namespace vorlund {
namespace {

constexpr const wchar* kClassName = VRL_L("vorlund::CVideoWindow");
constexpr DWORD kStyle = WS_OVERLAPPEDWINDOW;
/// Any thread may send it; only the window's own thread can destroy a window.
constexpr UINT kDestroyMessage = WM_APP;

/// The window whose loop runs on this thread, and where its events go.
struct TLoop {
    HWND window = nullptr;
    CWindowEvents* events = nullptr;
};
constinit thread_local TLoop loop;

TWindowSize GetInside(HWND window) {
    RECT client{};
    GetClientRect(window, &client);
    return {static_cast<int>(client.right), static_cast<int>(client.bottom)};
}

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    CWindowEvents* const events = loop.window == window ? loop.events : nullptr;
    switch (message) {
    case WM_CREATE:
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    case WM_CLOSE:
    case kDestroyMessage:
        DestroyWindow(window);
        return 0;
    default:
        break;
    }
    const LRESULT result = DefWindowProcW(window, message, wParam, lParam);
    if (!events) return result;
    if (message == WM_SIZE && wParam != SIZE_MINIMIZED) events->TellSize(GetInside(window));
    // Behind the default, which takes the request to paint away.
    if (message == WM_PAINT) events->TellExposed();
    if (message == WM_KILLFOCUS) events->TellAllReleased();
    return result;
}

class CNativeWindowWin32 final : public CNativeWindow {
public:
    CNativeWindowWin32(HWND window, CWindowEvents& events) : window_(window), events_(events) {}

    void* GetHandle() const override { return window_; }

    TWindowSize GetOuterSize(TWindowSize client) const override {
        RECT rectangle{0, 0, client.width, client.height};
        AdjustWindowRect(&rectangle, kStyle, FALSE);
        return {static_cast<int>(rectangle.right - rectangle.left),
                static_cast<int>(rectangle.bottom - rectangle.top)};
    }

    void Resize(TWindowSize outer) override {
        SetWindowPos(window_, nullptr, 0, 0, outer.width, outer.height,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOOWNERZORDER);
    }

    void SetTitle(const wchar* title) override { SetWindowTextW(window_, title); }

    void SetOwner(void* owner) override {
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(owner));
    }

    void Destroy() override { SendMessageW(window_, kDestroyMessage, 0, 0); }

    void RunLoop() override {
        loop = {window_, &events_};
        events_.TellSize(GetInside(window_));
        // It was painted before anybody could be told.
        events_.TellExposed();
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            TranslateMessage(&message);
            // Here, not in the procedure: what a key gives is in the queue by now.
            const MSG character = message.hwnd == window_ ? TellKey(events_, message) : MSG{};
            DispatchMessageW(&message);
            if (character.hwnd) DispatchMessageW(&character);
        }
        loop = {};
        // Fails while another window of the class exists, so the last one succeeds.
        UnregisterClassW(kClassName, GetModuleHandleW(nullptr));
    }

private:
    HWND window_;
    CWindowEvents& events_;
};

} // namespace

std::unique_ptr<CNativeWindow> CNativeWindow::Create(const wchar* title, CWindowEvents& events) {
    const HINSTANCE process = GetModuleHandleW(nullptr);
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = &WindowProcedure;
    windowClass.hInstance = process;
    windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
    windowClass.lpszClassName = kClassName;
    // Fails when another window has registered it already, which does no harm.
    RegisterClassW(&windowClass);
    const HWND window = CreateWindowExW(0, kClassName, title, kStyle, CW_USEDEFAULT, CW_USEDEFAULT,
                                        CW_USEDEFAULT, CW_USEDEFAULT, nullptr, nullptr, process, nullptr);
    if (!window) {
        UnregisterClassW(kClassName, process);
        return nullptr;
    }
    auto native = std::make_unique<CNativeWindowWin32>(window, events);
    ShowWindow(window, SW_SHOW);
    UpdateWindow(window);
    return native;
}

} // namespace vorlund
