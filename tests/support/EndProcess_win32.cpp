#include "support/EndProcess.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace vorlund::test {

void EndProcess(int code) {
    // Not by the way that asks every module: the loader may be in the middle of something.
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(code));
    for (;;) Sleep(INFINITE);
}

} // namespace vorlund::test
