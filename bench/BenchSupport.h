// What every benchmark does first.
#pragma once

#include <vorlund/Debug.h>
#include <vorlund/Vorlund.h>

namespace vorlund::bench {

/// An initialised library whose debugger output goes nowhere: what the system log costs is measured once, on
/// its own.
class CLibrary {
public:
    CLibrary() {
        CDebug::SetHandler(DEBUG_MESSAGE_OUTPUT, [](TDebugMessageType, const wchar*, void*) {});
        v.Init();
    }
    CLibrary(const CLibrary&) = delete;
    CLibrary& operator=(const CLibrary&) = delete;
    ~CLibrary() { v.Close(); }
};

} // namespace vorlund::bench
