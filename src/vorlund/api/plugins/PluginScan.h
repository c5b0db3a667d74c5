// The scan of a plug-in: another process loads it first, and dies in this one's stead.
#pragma once

#include "vorlund/api/plugins/PluginReports.h"

namespace vorlund::pluginscan {

/// The full path of the scan's program; empty when there is none at its usual places.
wstring FindHelper();

/// What came of the plug-in `file` in a process of the program `helper`: `PLUGIN_LOADED` when it was loaded,
/// initialised, closed and unloaded there. Takes at most a little more than `kMaxScanSeconds`. Raises
/// `std::bad_alloc`.
TPluginResult Scan(const wchar* helper, const wchar* file);

} // namespace vorlund::pluginscan
