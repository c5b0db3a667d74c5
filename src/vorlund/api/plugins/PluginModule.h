// What the plug-in store needs of the operating system. A port supplies everything declared here in a file
// PluginModule_<system>.cpp. Nothing here raises, except std::bad_alloc. The entry points are in
// PluginEntries.h.
#pragma once

#include <vorlund/Platform.h>
#include <vorlund/PluginTable.h>

namespace vorlund::pluginmodule {

/// What separates folders in a path.
extern const wchar kSeparator;
/// The extension of shared libraries, without the dot.
extern const wchar* const kExtension;

using TInitEntry = bool (*)();
using TCloseEntry = void (*)();
using TTableFunction = const vorlund_plugin_table*(VORLUND_PLUGIN_CALL*)();

/// The full path of the process's executable file; empty when it is not known, or longer than 255 units where
/// the system has that limit.
wstring GetHostPath();

/// The full path of the file of this library; empty when it is not known, or too long as above.
wstring GetLibraryPath();

/// The name of the scan's program.
extern const wchar* const kHelperName;
/// The way from the folder of an installed library to that of the programs; "" when they are the same.
extern const wchar* const kProgramsFromLibrary;

/// Why the system does not load a shared library.
struct TRefusal {
    /// Its reason as a number, or 0 when it gives none.
    int error = 0;
    /// Its reason in words; may be empty.
    wstring text = {};
    /// The name of the library that is missing, when it is that.
    wstring missing = {};
};

/// Loads a shared library; null when the system refuses, and then `refusal` says why. Only for files that
/// PluginImage.h takes for plug-ins. The libraries that the file needs come from its own folder, that of the
/// program and the system's, never from the working folder or the folders of programs; a system that cannot
/// promise this refuses.
void* Load(const wchar* path, TRefusal& refusal);

/// The entry points of a loaded plug-in, or null.
TInitEntry FindInitEntry(void* module);
TCloseEntry FindCloseEntry(void* module);

/// The table of a loaded plug-in, or null. It runs the function that returns it, if there is one instead.
/// Only what the file itself exports counts, not what the libraries do that it needs.
const vorlund_plugin_table* FindTable(void* module);

/// Gives back one `Load`.
void Unload(void* module);

} // namespace vorlund::pluginmodule
