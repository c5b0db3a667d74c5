// The DLL's entry point. The C++ run-time builds `v` after its first call, and destroys the objects that end
// with the library after its last.
#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/system/ProcessEnd_win32.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
    // Nothing here is kept per thread, so threads need not be announced.
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(module);
        vorlund::waiting::FindProcessEnd();
    }
    // `reserved` is set when the process ends, and then the system has already ended all other threads.
    if (reason == DLL_PROCESS_DETACH && reserved) vorlund::waiting::NoteThreadIsLast();
    return TRUE;
}
