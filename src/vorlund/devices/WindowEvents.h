// From what a window system says to the handler of an application.
#pragma once

#include "vorlund/devices/NativeWindow.h"

#include <vorlund/WindowEvents.h>

#include <array>
#include <cstddef>
#include <mutex>

namespace vorlund {

/// Keeps the handler, and what events must know of those before them. The lock is held while the handler
/// runs, so that nobody takes it away meanwhile; it is recursive, because the handler may do that itself, and
/// because Windows tells of further events from inside calls that a handler makes.
class CWindowEvents {
public:
    /// Any thread.
    void SetHandler(TWindowHandler handler, void* user);

    // The rest belongs to the window's thread.

    /// Forgets the window before.
    void Begin();
    void TellSize(TWindowSize inside) noexcept;
    void TellExposed() noexcept { Tell({.type = WINDOW_EVENT_EXPOSED}); }
    /// `code` stands for the key itself, whatever it gives.
    void TellPressed(std::uint32_t code, std::uint32_t key, std::uint32_t modifiers) noexcept;
    /// Nothing when it is not down.
    void TellReleased(std::uint32_t code, std::uint32_t modifiers) noexcept;
    /// No key is down any more, as far as this window knows.
    void TellAllReleased() noexcept;
    void TellClosed() noexcept { Tell({.type = WINDOW_EVENT_CLOSED}); }

private:
    struct THeldKey {
        std::uint32_t code;
        std::uint32_t key;
    };
    /// More keys than fingers; of those beyond nobody is told that they are released.
    static constexpr std::size_t kMaxHeld = 16;

    void Tell(TWindowEvent event) noexcept;
    THeldKey* Find(std::uint32_t code);

    std::recursive_mutex mutex_;
    TWindowHandler handler_ = nullptr;
    void* user_ = nullptr;

    TWindowSize size_;
    std::array<THeldKey, kMaxHeld> held_{};
    std::size_t heldCount_ = 0;
};

} // namespace vorlund
