/// \file
/// How child programs tell their parents what the library reports: a line per message on the standard output.
#pragma once

#include <vorlund/Debug.h>

#include <cstdio>
#include <cstring>

namespace vorlund::test {

/// Writes a line at once: nothing is left to be flushed when the process ends badly. Safe while the process
/// ends, because it uses nothing but the C library.
inline void WriteLine(const char* kind, const char* text) {
    std::printf("%s %s\n", kind, text);
    std::fflush(stdout);
}

/// A debug handler that writes "output ..." or "box ..."; the library's texts are ASCII here.
inline void ReportToParent(TDebugMessageType type, const wchar* text, void*) {
    char narrow[1024];
    std::size_t length = 0;
    for (; text[length] && length + 1 < sizeof(narrow); ++length)
        narrow[length] = static_cast<char>(text[length]);
    narrow[length] = 0;
    WriteLine(type == DEBUG_MESSAGE_OUTPUT ? "output" : type == DEBUG_MESSAGE_BOX ? "box" : "stream", narrow);
}

/// Sends every message to the parent, for good: also those of the process's end.
inline void SendReportsToParent() {
    CDebug::KeepHandlersToTheEnd();
    for (const TDebugMessageType type :
         {DEBUG_MESSAGE_OUTPUT, DEBUG_MESSAGE_BOX, DEBUG_MESSAGE_STDOUT, DEBUG_MESSAGE_STDERR})
        CDebug::SetHandler(type, &ReportToParent);
}

} // namespace vorlund::test
