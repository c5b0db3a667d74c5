#include "vorlund/api/plugins/PluginFolder.h"

namespace vorlund::pluginfolder {

bool IsOpenToOthers(const wchar*) {
    return false;
}

} // namespace vorlund::pluginfolder
