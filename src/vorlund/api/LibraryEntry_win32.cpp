// The DLL's entry point. It does no work of its own; `v` is built and destroyed by the C++ run-time.
#include "vorlund/system/WindowsLean.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    // Nothing here is kept per thread, so threads need not be announced.
    if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(module);
    return TRUE;
}
