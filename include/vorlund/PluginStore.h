/// \file
/// Where plug-ins are looked for, and which are loaded. How to write one: Plugin.h.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund {

class IObjectEnumerator;

/// The plug-in folders and extensions, and the loaded plug-ins. `v.Init()` loads every available plug-in and
/// `v.Close()` closes and unloads them.
///
/// At first there is one extension, "dll" ("so" on POSIX), and up to two folders: that of the process's
/// executable, and its sub-folder "plugins". Add others before `v.Init()`. A plug-in of the wrong
/// architecture, a file that is no shared library, one that was cut short, and a directory of a plug-in's
/// name are passed over; a fault inside a shared library that looks whole may end the process, as it may
/// wherever a library is loaded.
///
/// No locks: used by the application's main thread. Null texts count as empty. What the file and folder
/// objects raise, and what a plug-in raises from its entry points, passes on.
class VRL_API CPluginStore {
public:
    /// Sets the folders and the extension that the store begins with. Without memory for them, raises
    /// nothing: the operations, `Close` excepted, then try again and raise `std::bad_alloc` if they must.
    CPluginStore();
    CPluginStore(const CPluginStore&) = delete;
    CPluginStore& operator=(const CPluginStore&) = delete;

    /// Forgets everything; closes no plug-in.
    ~CPluginStore();

    /// Does nothing.
    void Init();

    /// Calls the close entry of every loaded plug-in, in the order of loading, and unloads each after its
    /// own. For the other operations the plug-ins still count as loaded. A plug-in whose close entry raises
    /// stays in the process, because the exception may need it; it is not closed again, and another `Close`
    /// goes on with the next one.
    void Close();

    /// Appends a folder, with or without a separator at its end.
    void AddPluginPath(const wchar* path);

    /// Appends an extension, without the dot. Extensions are compared exactly.
    void AddPluginExtension(const wchar* extension);

    /// Loads the plug-ins of that name (without folder and extension) from every folder and under every
    /// extension: a plug-in that is in two folders is loaded twice. One that returns false from its init
    /// entry, or lacks an entry, is unloaded again. Silent when there is none. A plug-in that raises from its
    /// init entry stays in the process and is not recorded.
    void LoadPlugin(const wchar* name);

    /// `LoadPlugin` for each name of `EnumerateAvailablePlugins`, so a plug-in that is in two folders is
    /// loaded four times, twice from each. Nothing happens when there is none, even while the library is
    /// closed.
    void LoadAvailablePlugins();

    /// Whether a plug-in was loaded under exactly this name, also when it has been closed.
    bool IsPluginLoaded(const wchar* name) const;

    /// A new enumerator, owned by the caller, with one `IStringObject` per loaded plug-in, in the order of
    /// loading: the name under which it was loaded. Raises what creating an object raises, and
    /// `CBugException` "Cannot create enumerator" or "Cannot create string object" when their classes were
    /// replaced by others of another kind.
    IObjectEnumerator* EnumerateLoadedPlugins() const;

    /// The same with the names of the plug-in files in the folders, once per folder, in the order of the file
    /// system. A file counts when it has one of the extensions and its name does not end in "_d", the mark of
    /// development variants. Folders that do not exist are passed over. Raises "Cannot create folder" too.
    IObjectEnumerator* EnumerateAvailablePlugins() const;

    /// Prints "Plugin ... is loaded" for each loaded name, then "Plugin ... is not loaded" for each available
    /// one that is none of them, to the debugger output.
    void Dump() const;

private:
    struct TData;
    mutable TData* data_;
};

} // namespace vorlund
