// The one folder of the plug-ins that come with the library.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund {

/// Its path; empty when there is none.
wstring FindInstalledPlugins();

} // namespace vorlund
