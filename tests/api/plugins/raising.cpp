// The plug-in that raises at the beginning; the texts of the exception lie in it.
#include "api/plugins/Report.h"

namespace {
constexpr vorlund::TFailure kFailure{VRL_L("VrlInitPlugin"), VRL_L("tests/plugins/raising"), 7,
                                     VRL_L("Plug-in cannot start")};
}

bool VrlInitPlugin() {
    vorlund::Raise<vorlund::CInvalidStateException>(kFailure);
}

void VrlClosePlugin() {
    vorlund::test::Report("close", "raising");
}
