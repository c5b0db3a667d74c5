// The plug-in that uses nothing of the library, so that programs without the shared library can load it.
#include <vorlund/Plugin.h>

bool VrlInitPlugin() {
    return true;
}

void VrlClosePlugin() {}
