// The plug-in that does nothing.
#include <vorlund/Plugin.h>

bool VrlInitPlugin() {
    return true;
}

void VrlClosePlugin() {}
