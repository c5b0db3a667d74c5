// A plug-in that does not want to be in a process.
#include <vorlund/Plugin.h>

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID);
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID) {
    return FALSE;
}

bool VrlInitPlugin() {
    return true;
}

void VrlClosePlugin() {}
