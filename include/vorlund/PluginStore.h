/// \file
/// Where plug-ins are looked for, and which are loaded. How to write one: Plugin.h.
#pragma once

#include <vorlund/PluginReport.h>

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

    /// Whether `Close` leaves the plug-ins that it closes in the process from now on; at first false.
    /// `v.Abandon()` lets it while an exception is passing, which may be a plug-in's and have its text and
    /// its class there. Since version 0.1.
    void KeepInProcess(bool keeps) noexcept;

    /// Appends a folder, with or without a separator at its end.
    void AddPluginPath(const wchar* path);

    /// Whether this folder is searched: the same text, with or without a separator at its end. Since version
    /// 0.1.
    bool HasPluginPath(const wchar* path) const;

    /// Appends an extension, without the dot. Extensions are compared exactly.
    void AddPluginExtension(const wchar* extension);

    /// Loads the plug-ins of that name (without folder and extension) from every folder and under every
    /// extension: a plug-in that is in two folders is loaded twice. One that returns false from its init
    /// entry, or lacks an entry, is unloaded again. Silent when there is none. A plug-in that raises from its
    /// init entry stays in the process and is not recorded.
    void LoadPlugin(const wchar* name);

    /// `LoadPlugin` for each name of `EnumerateAvailablePlugins`, so a plug-in that is in two folders is
    /// loaded four times, twice from each. Nothing happens when there is none, even while the library is
    /// closed. Raises what that raises, "Cannot search" too.
    void LoadAvailablePlugins();

    /// Whether a plug-in was loaded under exactly this name, also when it has been closed.
    bool IsPluginLoaded(const wchar* name) const;

    /// A new enumerator, owned by the caller, with one `IStringObject` per loaded plug-in, in the order of
    /// loading: the name under which it was loaded. Raises what creating an object raises, and
    /// `CBugException` "Cannot create enumerator" or "Cannot create string object" when their classes were
    /// replaced by others of another kind.
    IObjectEnumerator* EnumerateLoadedPlugins() const;

    /// The same with the names of the plug-in files in the folders, once per folder, in the order of the file
    /// system. A file with one of the extensions counts unless its name ends in "_d", the mark of development
    /// variants. Missing folders are passed over. Raises "Cannot create folder" and "Cannot search" too.
    IObjectEnumerator* EnumerateAvailablePlugins() const;

    /// Prints "Plugin ... is loaded" for each loaded name, then "Plugin ... is not loaded" for each available
    /// one that is none of them, to the debugger output.
    void Dump() const;

    /// Forgets all folders, the executable's too: only what is added afterwards is searched. Since version
    /// 0.1.
    void ClearPluginPaths();

    /// Sets how files are made sure of before they are loaded; at first `PLUGIN_SCAN_NONE`. Call it before
    /// `v.Init()`. With `PLUGIN_SCAN_CHILD`, every file that looks like a plug-in is loaded, initialised,
    /// closed and unloaded by another process first, which takes some milliseconds for each, at most 10 s. A
    /// plug-in that dies, hangs, raises, declines or cannot be loaded there is not loaded here; the reports
    /// say why. The other process knows the library's own classes only, not those of the application or of
    /// other plug-ins.
    ///
    /// \param mode    a `TPluginScanMode`
    /// \param helper  the full path of the program `vorlund-plugin-scan`; null for the one beside the
    ///                process's executable, or else beside the library or in the folder of programs that the
    ///                library was installed with. Without one no plug-in is loaded.
    ///
    /// Since version 0.1.
    void SetScanMode(TPluginScanMode mode, const wchar* helper = nullptr);

    /// Loads the plug-in of that path, whatever its extension, as `LoadPlugin` does, under its name without
    /// folder and extension. Returns what came of it; `PLUGIN_NO_PLUGIN` when there is no such file. Since
    /// version 0.1.
    TPluginOutcome LoadPluginFile(const wchar* path);

    /// Sets what becomes of an exception that a plug-in raises from its init entry; at first
    /// `PLUGIN_FAILURE_PASSES_ON`. Call it before `v.Init()`. With `PLUGIN_FAILURE_REPORTED` the plug-in
    /// stays in the process, with what it has registered, and is not closed; so does one that returns false
    /// after it has registered something. `std::bad_alloc` passes on all the same. Since version 0.1.
    void SetFailureMode(TPluginFailureMode mode);

    /// The number of folders that are searched, and folder `index`, as it was added; an empty text from the
    /// number on. Since version 0.1.
    unsigned int GetPluginPathCount() const;
    CString GetPluginPath(unsigned int index) const;

    /// The number of reports: one for each file of the folders that has the name of a plug-in, with what came
    /// of it the last time, and one for each folder to be warned of. Since version 0.1.
    unsigned int GetReportCount() const;

    /// Report `index`, in the order in which the files were first looked at; an empty one, `PLUGIN_BEGUN`
    /// without a path, from the number of reports on. Since version 0.1.
    TPluginReport GetReport(unsigned int index) const;

private:
    struct TData;
    mutable TData* data_;
};

} // namespace vorlund
