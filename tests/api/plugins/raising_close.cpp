// The plug-in that raises at the end.
#include "api/plugins/Report.h"

namespace {
constexpr vorlund::TFailure kFailure{VRL_L("VrlClosePlugin"), VRL_L("tests/plugins/raising_close"), 16,
                                     VRL_L("Plug-in cannot end")};
}

bool VrlInitPlugin() {
    vorlund::test::Report("init", "raising_close");
    return true;
}

void VrlClosePlugin() {
    vorlund::Raise<vorlund::CInvalidStateException>(kFailure);
}
