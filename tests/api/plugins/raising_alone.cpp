// The plug-in that raises and uses nothing of the library, so that programs without the shared library can
// load it.
#include <vorlund/Plugin.h>

#include <stdexcept>

bool VrlInitPlugin() {
    throw std::runtime_error("no sound card, and a text too long to be kept in place");
}

void VrlClosePlugin() {}
