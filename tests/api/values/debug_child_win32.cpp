#include "api/values/debug_child.h"

#include <windows.h>

namespace vorlund::test {
namespace {

LONG WINAPI EndQuietly(EXCEPTION_POINTERS*) {
    return EXCEPTION_EXECUTE_HANDLER;
}

/// Without a debugger: the process ends with the breakpoint's code, and nobody is asked.
int BreakAlone() {
    SetUnhandledExceptionFilter(&EndQuietly);
    CDebug::Break();
    return 0;
}

} // namespace

int RunSystemMode(const std::string& mode) {
    if (mode == "break-alone") return BreakAlone();
    return kUnknownMode;
}

} // namespace vorlund::test
