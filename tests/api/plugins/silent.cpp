// The plug-in that uses nothing of the library, so that programs without the shared library can load it. Its
// end is told on the standard output.
#include <vorlund/Plugin.h>

#include <cstdio>

bool VrlInitPlugin() {
    return true;
}

void VrlClosePlugin() {
    std::puts("close silent");
    std::fflush(stdout);
}
