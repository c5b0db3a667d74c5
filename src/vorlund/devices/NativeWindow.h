// What the video window needs of the window system: NativeWindow_win32.cpp, NativeWindow_xcb.cpp for the X
// Window System, and NativeWindow_none.cpp for builds without one. A port supplies such a file with a class
// derived from this one, and `Create`.
#pragma once

#include <vorlund/Platform.h>

#include <memory>

namespace vorlund {

class CWindowEvents;

/// In pixels.
struct TWindowSize {
    int width = 0;
    int height = 0;
};

/// A window on the screen. It is created, and its loop runs, on one thread; everything else may be called
/// from another thread at the same time, even when the user has just closed the window. Only `Create` and
/// `SetTitle` raise, `std::bad_alloc`.
class CNativeWindow {
public:
    /// Creates a window with the system's own size and place, shows and paints it. Null when the system has
    /// no window to give. `events` is told of what happens while the loop runs, the size at its beginning
    /// first; closing is left to the caller, who sees the loop end.
    static std::unique_ptr<CNativeWindow> Create(const wchar* title, CWindowEvents& events);

    CNativeWindow() = default;
    CNativeWindow(const CNativeWindow&) = delete;
    CNativeWindow& operator=(const CNativeWindow&) = delete;
    /// Called after the loop has ended, on any thread.
    virtual ~CNativeWindow() = default;

    virtual void* GetHandle() const = 0;
    /// The outer size of a window whose inside has the size `client`.
    virtual TWindowSize GetOuterSize(TWindowSize client) const = 0;
    virtual void Resize(TWindowSize outer) = 0;
    virtual void SetTitle(const wchar* title) = 0;
    /// Keeps the address of the window's object with the window, where the system has a place for it.
    virtual void SetOwner(void* owner) = 0;
    /// Makes the loop end, with the window destroyed. Also from inside the loop.
    virtual void Destroy() = 0;
    /// Runs until the window is gone.
    virtual void RunLoop() = 0;
};

} // namespace vorlund
