// The plug-in that raises an exception that is not the library's.
#include "api/plugins/Report.h"

#include <stdexcept>

bool VrlInitPlugin() {
    throw std::runtime_error("no sound card");
}

void VrlClosePlugin() {
    vorlund::test::Report("close", "raising_other");
}
