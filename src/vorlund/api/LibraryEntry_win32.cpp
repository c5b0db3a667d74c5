// The DLL's entry point. It does no work of its own: the C++ run-time builds `v` after it, and destroys what
// ends with the library after it.
#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/system/ProcessEnd_win32.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
    // Nothing here is kept per thread, so threads need not be announced.
    if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(module);
    // With an argument it is the process that ends, and all other threads have been ended before.
    if (reason == DLL_PROCESS_DETACH && reserved) vorlund::waiting::NoteThreadIsLast();
    return TRUE;
}
