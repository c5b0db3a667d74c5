/// \file
/// What happens to a video window: it is closed by the user, has another size, must be drawn again, and keys
/// are pressed and released in it.
#pragma once

#include <vorlund/Platform.h>

#include <cstdint>

namespace vorlund {

class IVideoWindow;

/// Since version 0.1.
enum TWindowEventType : std::uint32_t {
    /// The window is gone, and neither `IVideoWindow::Close` nor the end of the object did it: the user
    /// closed
    /// it, or the system took it away. `GetHandle` is null already. The last event of a window.
    WINDOW_EVENT_CLOSED = 0,
    /// The inside has another size, whoever changed it; also told once for the size that it has at first.
    WINDOW_EVENT_RESIZED = 1,
    /// A part of the inside is to be drawn again: it was covered, or is new.
    WINDOW_EVENT_EXPOSED = 2,
    /// A key went down; while it is held, told again and again as the system repeats keys.
    WINDOW_EVENT_KEY_PRESSED = 3,
    /// A key went up, or the window has lost the keyboard while it was down.
    WINDOW_EVENT_KEY_RELEASED = 4,
};

/// Keys. One that gives a character is that character, as a UTF-16 unit: letters, digits, '+', ' '; those of
/// a block of digits as well. Which character is decided by the user's layout and by Shift, Caps Lock and
/// AltGr; Control and Alt do not change it. Everything else has a name here, or is `WINDOW_KEY_OTHER`. Since
/// version 0.1.
enum TWindowKey : std::uint32_t {
    WINDOW_KEY_OTHER = 0,
    WINDOW_KEY_BACKSPACE = 0x08,
    WINDOW_KEY_TAB = 0x09,
    WINDOW_KEY_ENTER = 0x0D,
    WINDOW_KEY_ESCAPE = 0x1B,
    WINDOW_KEY_SPACE = 0x20,
    WINDOW_KEY_DELETE = 0x7F,
    // No characters: numbers that UTF-16 has no use for.
    WINDOW_KEY_LEFT = 0x10000,
    WINDOW_KEY_UP = 0x10001,
    WINDOW_KEY_RIGHT = 0x10002,
    WINDOW_KEY_DOWN = 0x10003,
    WINDOW_KEY_HOME = 0x10004,
    WINDOW_KEY_END = 0x10005,
    WINDOW_KEY_PAGE_UP = 0x10006,
    WINDOW_KEY_PAGE_DOWN = 0x10007,
    WINDOW_KEY_INSERT = 0x10008,
    WINDOW_KEY_F1 = 0x10011, ///< F2 to F12 follow one by one
    WINDOW_KEY_F12 = 0x1001C,
};

/// Bits of `TWindowEvent::modifiers`. Since version 0.1.
enum TWindowModifier : std::uint32_t {
    WINDOW_MODIFIER_SHIFT = 1,
    WINDOW_MODIFIER_CONTROL = 2,
    WINDOW_MODIFIER_ALT = 4,
};

/// One event; it lives during the call of the handler. Since version 0.1.
struct TWindowEvent {
    /// A `TWindowEventType`.
    std::uint32_t type = WINDOW_EVENT_CLOSED;
    /// Of keys: the character or a `TWindowKey`. A release tells what the press has told, also when Shift was
    /// let go between them.
    std::uint32_t key = WINDOW_KEY_OTHER;
    /// Of keys: the `TWindowModifier`s that are held.
    std::uint32_t modifiers = 0;
    /// Of a press: not 0 when the system repeats a key that is held.
    std::uint32_t isRepeated = 0;
    /// The size of the inside, in pixels, with every type.
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// Receives the events of a window, one after the other; `user` is the pointer given to `SetWindowHandler`.
///
/// The window's own thread calls it, also before `IVideoWindow::Open` has returned; until it returns, the
/// window stands still. So it does little: it notes what happened, sets an event, or draws. It may call
/// `GetHandle` and `Close` of its window, and `SetWindowHandler`; after `Close` there the window is gone when
/// the handler has returned, and no `WINDOW_EVENT_CLOSED` follows. Everything else of the window, the last
/// `Release` included, is for the application's thread, and waiting for a thread that uses the window is a
/// deadlock. No exception may leave it: that ends the process.
using TWindowHandler = void (*)(const TWindowEvent& event, void* user);

/// Has `handler` told of what happens to `window`, now and each time it is opened, in place of the handler
/// before; null takes it away. What happened before this call is not told. When the function returns, the
/// former handler is not running and is not called any more, so its `user` may go; called from inside a
/// handler, it does not wait for that one. Any thread, as long as the window lives; a thread that holds what
/// the handler waits for waits for ever.
///
/// \return false for a window that is not of the library's own class: nothing is known of its events
///
/// Raises nothing. Since version 0.1.
VRL_API bool SetWindowHandler(IVideoWindow& window, TWindowHandler handler, void* user = nullptr);

} // namespace vorlund
