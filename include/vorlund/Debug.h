/// \file
/// `CDebug`, the library's one channel for diagnostic text, and its four destinations.
#pragma once

#include <vorlund/FormatArguments.h>
#include <vorlund/Platform.h>

namespace vorlund {

/// Where `CDebug::PrintMessage` sends a text. Any other value prints nothing.
enum TDebugMessageType : int {
    /// The debugger output: `OutputDebugStringW` (the text, then "\n") on Windows, the system log elsewhere.
    DEBUG_MESSAGE_OUTPUT = 0,
    /// A message box captioned "Vorlund message" with an OK button and the information icon; elsewhere a
    /// framed notice on the controlling terminal, which waits for Enter while the process is in the
    /// foreground and which a process without a terminal never shows. The call returns when the box is
    /// closed.
    DEBUG_MESSAGE_BOX = 1,
    /// The standard output, then an end of line, flushed, in the encoding of the C runtime's locale, or of
    /// the console. A text that it cannot encode is written as UTF-8 on POSIX and with substitutes on
    /// Windows; the stream goes on working, whether it prints bytes or wide characters, and one that has
    /// printed nothing stays free to do either.
    DEBUG_MESSAGE_STDOUT = 2,
    /// The standard error stream, in the same way.
    DEBUG_MESSAGE_STDERR = 3
};

/// Receives what would have gone to destination `type`: `text` is the whole message without a final line end
/// and lives only during the call. `user` is the pointer given to `CDebug::SetHandler`. May be called from
/// any thread, and from several at once, until it is replaced or the process ends.
using TDebugHandler = void (*)(TDebugMessageType type, const wchar* text, void* user);

/// Diagnostic output. All operations are static and safe from any thread; lines of concurrent calls may
/// interleave but each stays whole.
class VRL_API CDebug {
public:
    CDebug() = delete;

    /// Formats wide text printf-style and sends it to `type`. At most 1023 units are kept; the rest is cut.
    ///
    /// In `format`, `%s` and `%c` take wide text, `%S`, `%hs`, `%C` and `%hc` narrow text (widened unit by
    /// unit with sign extension), `%I64d` and `%lld` 64-bit integers; everything else is as in C. A null text
    /// prints as "(null)", a fraction has a "." in every locale, and from an unknown conversion on the rest
    /// of the format is printed as it is written. `%n` is not supported and prints nothing. Never raises.
    static void PrintMessage(TDebugMessageType type, const wchar* format, ...);

    /// The same with `CString`s among the arguments, which print as their texts (`%s`). Since version 0.1.
    template <class... T>
    requires formatting::TextArguments<T...>
    static void PrintMessage(TDebugMessageType type, const wchar* format, const T&... arguments) {
        PrintMessage(type, format, formatting::Argument(arguments)...);
    }
    /// No other object can be printed.
    template <class... T>
    requires formatting::ObjectArguments<T...>
    static void PrintMessage(TDebugMessageType type, const wchar* format, const T&... arguments) = delete;

    /// Replaces the default destination of `type` by `handler`, which is then called with `user`; a null
    /// `handler` restores the default. Servers use this to avoid a modal box. Unknown types are ignored.
    ///
    /// A call that is already under way on another thread may still reach the former handler after this
    /// returns. Messages printed from inside a handler, exceptions it builds included, reach no handler and
    /// no destination; an exception that leaves a handler is dropped.
    ///
    /// When the process ends, or the library is unloaded, handlers are taken away: a message may still come,
    /// for example because nobody has closed the library, and what a handler and `user` need may be gone
    /// then. It happens before the objects with static storage end that were there when the first handler was
    /// set. From then on messages go to the default destinations, and this function does nothing; only what a
    /// handler got instead of a box goes to the standard error stream, so that no box holds up the end.
    /// `KeepHandlersToTheEnd` is for handlers that can do without anything that ends.
    static void SetHandler(TDebugMessageType type, TDebugHandler handler, void* user = nullptr);

    /// Handlers, those that are set already included, stay in place while the process ends or the library is
    /// unloaded. Only for handlers whose code is not unloaded before the library, and that use nothing,
    /// `user` included, which ends with the process's static objects. Any thread; cannot be taken back. Since
    /// version 0.1.
    static void KeepHandlersToTheEnd();

    /// Stops in an attached debugger (`DebugBreak` on Windows, `SIGTRAP` elsewhere). Without a debugger this
    /// ends the process, unless a handler for the trap is installed.
    static void Break();
};

} // namespace vorlund
