// The way of a message: `CDebug::PrintMessage` formats it on the stack; `EmitDebugText`, where the lines of
// exceptions (Exception.cpp) and long texts enter, gives it to the handler of its destination; without a
// handler it goes to the default destination, which is the system's part: DebugOutput_win32.cpp, or
// DebugOutput_posix.cpp with the notice of FramedNotice.cpp.
//
// Handler and user pointer belong together, so they are read and replaced as a pair under a mutex. It is held
// only while they are copied: handlers and boxes run without it, and a handler may replace handlers.
// Everything here is constant-initialised and never destroyed, as exceptions are printed before the library's
// own objects are built and after they are destroyed. Handlers are another matter: they belong to the
// application, whose objects end before the library's. So the first one to be set asks the system to be told
// of the end (`EndHandlers`). What the application has built by then ends after that call.
#include <vorlund/Debug.h>

#include "vorlund/api/text/TextFormat.h"
#include "vorlund/api/values/DebugOutput.h"

#include <cstdarg>
#include <mutex>
#include <thread>

namespace vorlund {
namespace {

constexpr int kMessageCapacity = 1024;
constexpr int kDestinationCount = 4;
constexpr int kMaxTriesAtEnd = 1000;

struct THandler {
    TDebugHandler function;
    void* user;
};
THandler handlers[kDestinationCount];
std::mutex handlersMutex;

// Under the mutex:
bool areKeptToTheEnd;
bool haveEnded;

/// Set while this thread is inside a handler.
thread_local bool isInHandler;

bool IsDestination(TDebugMessageType type) {
    return type >= 0 && type < kDestinationCount;
}

THandler GetHandler(TDebugMessageType type) {
    const std::lock_guard guard(handlersMutex);
    return handlers[type];
}

void CallHandler(const THandler& handler, TDebugMessageType type, const wchar* text) {
    struct TMark {
        TMark() { isInHandler = true; }
        ~TMark() { isInHandler = false; }
    } const mark;
    handler.function(type, text, handler.user);
}

/// What comes instead of a handler for boxes at the end: a box would hold up the end of a process whose
/// application wanted none.
void WriteBoxTextAtEnd(TDebugMessageType, const wchar* text, void*) {
    debugoutput::WriteToStandardError(text);
}

void EndHandlers() {
    // Windows ends all other threads before, and one of them may have held the mutex: it is not waited for.
    std::unique_lock guard(handlersMutex, std::defer_lock);
    for (int tries = 0; tries < kMaxTriesAtEnd && !guard.try_lock(); ++tries) std::this_thread::yield();
    if (areKeptToTheEnd) return;
    haveEnded = true;
    for (THandler& handler : handlers) {
        const bool isForBoxes = &handler == &handlers[DEBUG_MESSAGE_BOX];
        handler = {handler.function && isForBoxes ? &WriteBoxTextAtEnd : nullptr, nullptr};
    }
}

/// Has `EndHandlers` called when the process ends or the library is unloaded.
void ArrangeEnd() {
    // Not `atexit`: where the thread sanitizer stands in for it, the call comes after the unloading.
    struct TEnd {
        ~TEnd() { EndHandlers(); }
    };
    [[maybe_unused]] static const TEnd end;
}

void WriteDefault(TDebugMessageType type, const wchar* text) {
    switch (type) {
    case DEBUG_MESSAGE_OUTPUT:
        debugoutput::WriteToDebugger(text);
        break;
    case DEBUG_MESSAGE_BOX:
        debugoutput::ShowBox(text);
        break;
    case DEBUG_MESSAGE_STDOUT:
        debugoutput::WriteToStandardOutput(text);
        break;
    case DEBUG_MESSAGE_STDERR:
        debugoutput::WriteToStandardError(text);
        break;
    }
}

} // namespace

void EmitDebugText(TDebugMessageType type, const wchar* text) {
    // A failing handler builds exceptions, whose lines would come back to it without end.
    if (!IsDestination(type) || isInHandler) return;
    try {
        const THandler handler = GetHandler(type);
        if (handler.function) {
            CallHandler(handler, type, text);
        } else {
            WriteDefault(type, text);
        }
    } catch (...) {
        // This may run while another failure is being raised, which must not be lost because its report
        // failed.
    }
}

void CDebug::PrintMessage(TDebugMessageType type, const wchar* format, ...) {
    if (!IsDestination(type)) return;
    wchar text[kMessageCapacity];
    std::va_list arguments;
    va_start(arguments, format);
    FormatText(text, kMessageCapacity, format, arguments);
    va_end(arguments);
    EmitDebugText(type, text);
}

void CDebug::SetHandler(TDebugMessageType type, TDebugHandler handler, void* user) {
    if (!IsDestination(type)) return;
    if (handler) ArrangeEnd();
    const std::lock_guard guard(handlersMutex);
    if (!haveEnded) handlers[type] = {handler, user};
}

void CDebug::KeepHandlersToTheEnd() {
    const std::lock_guard guard(handlersMutex);
    areKeptToTheEnd = true;
}

void CDebug::Break() {
    debugoutput::BreakIntoDebugger();
}

} // namespace vorlund
