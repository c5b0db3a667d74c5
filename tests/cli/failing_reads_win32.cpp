// A plug-in: from its loading on, the library reads nothing beyond a position of any file.
#include "support/ReadHook_win32.h"

#include <vorlund/Plugin.h>

#include <cstdlib>
#include <string_view>

bool VrlInitPlugin() {
    const char* const limit = std::getenv("VORLUND_TEST_READ_LIMIT");
    const char* const isError = std::getenv("VORLUND_TEST_READ_ERROR");
    return limit && isError && vorlund::test::LimitReads(std::atoll(limit), std::string_view(isError) == "1");
}

void VrlClosePlugin() {
    vorlund::test::UnlimitReads();
}
