/// \file
/// What came of the files that the plug-in store looked at, as data. `CPluginStore` (PluginStore.h) hands it
/// out.
#pragma once

#include <vorlund/String.h>

#include <cstdint>

namespace vorlund {

/// How the plug-in store makes sure of a file before it loads it. Since version 0.1.
enum TPluginScanMode {
    /// By the look at its headers alone.
    PLUGIN_SCAN_NONE,
    /// A process of its own, the program `vorlund-plugin-scan`, loads, initialises, closes and unloads it
    /// first. Only who comes through that is loaded here.
    PLUGIN_SCAN_CHILD,
};

/// What came of a file, or what is to be said of a folder. Since version 0.1.
enum TPluginOutcome {
    /// Being loaded. It stays when an exception other than the plug-in's own ends that, for lack of memory.
    PLUGIN_BEGUN,
    /// Loaded and initialised.
    PLUGIN_LOADED,
    /// Its headers say that it is no shared library for this process, that it was cut short, or that it names
    /// no entries.
    PLUGIN_NO_PLUGIN,
    /// The system does not load it. `code`: the system's error number on Windows, 0 elsewhere.
    PLUGIN_NOT_LOADABLE,
    /// It lacks an entry.
    PLUGIN_NO_ENTRY,
    /// Its init entry returned false.
    PLUGIN_DECLINED,
    /// One of its entries raised; under a scan, in the scan's process.
    PLUGIN_RAISED,
    /// The scan's program cannot be started, so the file was not loaded. `code`: the system's error number,
    /// or
    /// 0 when there is no such program.
    PLUGIN_SCAN_NO_HELPER,
    /// The scan's process died. `code`: the signal that ended it, or what it returned; on Windows the code of
    /// the failure.
    PLUGIN_SCAN_DIED,
    /// The scan's process did not end within 10 s and was killed.
    PLUGIN_SCAN_TOO_LATE,
    /// The scan's process ended without a whole answer, or wrote something else, or too much.
    PLUGIN_SCAN_GARBLED,
    /// Others than the user and the superuser may put files into this folder, from which a plug-in was
    /// loaded, or may exchange it. Only on POSIX.
    PLUGIN_FOLDER_OPEN,
};

/// One file or folder. Since version 0.1.
struct TPluginReport {
    /// The full path of the file, or of the folder for `PLUGIN_FOLDER_OPEN`.
    CString path;
    TPluginOutcome outcome;
    std::int32_t code;
    /// The outcome in words; lives as long as the library.
    const wchar* reason;
};

} // namespace vorlund
