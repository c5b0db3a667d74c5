/// \file
/// The video window: a top-level desktop window with a thread of its own.
#pragma once

#include <vorlund/Object.h>
#include <vorlund/Platform.h>

namespace vorlund {

/// A plain top-level window, meant as the surface that video devices draw on. A thread of the window's own
/// creates it, runs its message loop and ends when the window is gone: by `Close`, by the user, or with the
/// object.
///
/// The operations are called by one thread at a time; titles and sizes may be set while the window is shown.
/// Nothing is reported: without a display, or without the system's window libraries, `Open` returns and the
/// handle is null. Sizes are in pixels. Where a window manager draws the frame (X11), outer size and client
/// size are the same.
///
/// \code{.cpp}
/// // DEVICE_TYPE_VIDEO devices draw on such a window; it wants a display.
/// const auto window = CreateAs<IVideoWindow>(classid::CVideoWindow);
/// window->SetTitle(VRL_L("Hello"));
/// window->SetClientSize(320, 240);
/// window->Open();
/// window->Close();
/// \endcode
class IVideoWindow : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x9F88DC9D, 0xCC694367, 0xBDB4BFA5, 0x202F2DDE};

    /// Shows a new window and returns when it exists; does nothing while there is one.
    virtual void Open() = 0;
    /// Destroys the window and waits until its thread has ended; does nothing without a window.
    virtual void Close() = 0;
    /// The system's window, or null when there is none: an `HWND` on Windows, the number of an X11 window
    /// elsewhere. The user may close the window at any moment.
    virtual void* GetHandle() = 0;
    /// Asks for an inner size, now or for the next `Open`; 640 x 480 at first. It takes the place of an outer
    /// size that was set before. Nothing changes unless both are above 0.
    virtual void SetClientSize(int width, int height) = 0;
    /// Sets the outer size, now or for the next `Open`. A client size that waits for the next `Open` takes
    /// precedence.
    virtual void SetWindowSize(int width, int height) = 0;
    /// Sets the title, "Vorlund Video Window" at first.
    virtual void SetTitle(const wchar* title) = 0;

protected:
    ~IVideoWindow() = default;
};

} // namespace vorlund
