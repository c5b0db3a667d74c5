/// \file
/// What the window system says about a window, asked beside the library.
#pragma once

#include "devices/WindowPixels.h"

#include <vorlund/Platform.h>

#include <chrono>
#include <optional>
#include <thread>

namespace vorlund::test {

struct TWindowView {
    wstring title;
    /// The inside, in pixels.
    int width = 0;
    int height = 0;
};

/// Whether this build and this machine can show windows.
bool CanShowWindows();

/// A top-level window with that title, or null.
void* FindWindowByTitle(const wstring& title);

/// The window as the system sees it, or nothing when there is no such window.
std::optional<TWindowView> LookAtWindow(void* handle);

/// Does what happens when somebody closes the window with the mouse.
void CloseWindowByUser(void* handle);

/// Gives the window an outer size, as the user does with the mouse or a window manager by itself.
void ResizeWindowByUser(void* handle, int width, int height);

/// The window is told that a key went down, or up, as it would be from the keyboard. `key` as in
/// `TWindowEvent`, of those that need no Shift.
void PressKey(void* handle, std::uint32_t key);
void ReleaseKey(void* handle, std::uint32_t key);

/// What the window shows is lost, and it is asked to draw itself again.
void SpoilWindow(void* handle);

/// What the window shows, or nothing when it cannot be seen.
std::optional<TWindowPixels> GetWindowPixels(void* handle);

/// Waits until `condition` holds: window systems answer in their own time. Returns false after a minute.
template <class TCondition> bool WaitUntil(TCondition condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace vorlund::test
