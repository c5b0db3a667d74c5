/// \file
/// What came of the files that the plug-in store looked at, as data. `CPluginStore` (PluginStore.h) hands it
/// out.
#pragma once

#include <vorlund/Exception.h>
#include <vorlund/Id.h>
#include <vorlund/String.h>

#include <cstdint>
#include <vector>

namespace vorlund {

/// How the plug-in store makes sure of a file before it loads it. Since version 0.1.
enum TPluginScanMode {
    /// By the look at its headers alone.
    PLUGIN_SCAN_NONE,
    /// A process of its own, the program `vorlund-plugin-scan`, loads, initialises, closes and unloads it
    /// first. Only who comes through that is loaded here.
    PLUGIN_SCAN_CHILD,
};

/// What becomes of an exception that a plug-in raises from its init entry. Since version 0.1.
enum TPluginFailureMode {
    /// It passes on, and ends `v.Init()`.
    PLUGIN_FAILURE_PASSES_ON,
    /// It is in the report, and the next plug-in follows.
    PLUGIN_FAILURE_REPORTED,
};

/// What came of a file, or what is to be said of a folder. Since version 0.1.
enum TPluginOutcome {
    /// Being loaded. It stays when an exception other than the plug-in's own ends that, for lack of memory.
    PLUGIN_BEGUN,
    /// Loaded and initialised.
    PLUGIN_LOADED,
    /// It is no shared library, its headers are damaged, or it has neither of the two entries, as other
    /// libraries.
    PLUGIN_NO_PLUGIN,
    /// The system does not load it. `code`: the system's error number on Windows, 0 elsewhere. `detail`: the
    /// system's own reason.
    PLUGIN_NOT_LOADABLE,
    /// It lacks an entry, or has a table (PluginTable.h) and neither of them. `detail`: which.
    PLUGIN_NO_ENTRY,
    /// Its init entry returned false.
    PLUGIN_DECLINED,
    /// One of its entries raised; under a scan, in the scan's process. `detail`: the reason.
    PLUGIN_RAISED,
    /// The scan's program cannot be started, so the file was not loaded. `code`: the system's error number,
    /// or 0 when there is no such program.
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
    /// It is a shared library for another kind of machine. `detail`: for which.
    PLUGIN_OTHER_MACHINE,
    /// Its headers tell of more bytes than it has. `detail`: of how many.
    PLUGIN_CUT,
    /// A library that it needs, or that one of these needs, is not there. `detail`: its name. `code` as for
    /// `PLUGIN_NOT_LOADABLE`.
    PLUGIN_MISSING_LIBRARY,
    /// It was built for a version of the library that does not fit this one (`IsPluginCompatible`). `detail`:
    /// for which.
    PLUGIN_INCOMPATIBLE,
    /// Its table (PluginTable.h) cannot be used; nothing of it is registered. `detail`: why.
    PLUGIN_BAD_TABLE,
};

/// What a plug-in can register. Since version 0.1.
enum TPluginItemKind {
    PLUGIN_ITEM_CLASS,
    PLUGIN_ITEM_DECODER,
    PLUGIN_ITEM_ENCODER,
    PLUGIN_ITEM_DEVICE,
};

/// Something that a plug-in has registered. Since version 0.1.
struct TPluginItem {
    TPluginItemKind kind;
    /// The class of the decoder, encoder or device.
    CId classId;
    /// Its name; the text form of the identifier when the plug-in has not registered the class itself.
    CString name;
};

/// One file or folder. Since version 0.1.
struct TPluginReport {
    /// The full path of the file, or of the folder for `PLUGIN_FOLDER_OPEN`.
    CString path;
    TPluginOutcome outcome = PLUGIN_BEGUN;
    std::int32_t code = 0;
    /// The outcome in words; lives as long as the library.
    const wchar* reason = nullptr;
    /// What it is about, as the outcomes say; may be empty.
    CString detail;
    /// Of `PLUGIN_RAISED`: the type and the method of a `CException`. The method is empty for other
    /// exceptions.
    TExceptionType exceptionType = EXCEPTION_TYPE_GENERIC;
    CString exceptionMethod;
    /// What the file says of itself (PluginInfo.h): name, version and licence. Characters that control a
    /// terminal are replaced by "?".
    bool hasInfo = false;
    CString name;
    CString version;
    CString licence;
    /// The version of the library that it was built for, as `VORLUND_MAKE_VERSION` makes it; 0 when it uses
    /// nothing of it but a table (PluginTable.h).
    std::int32_t libraryVersion = 0;
    /// The libraries that its init entry has named, separated by ", ".
    CString libraries;
    /// What its init entry has registered, in that order.
    std::vector<TPluginItem> items;
    /// How often it was loaded and initialised since the process began.
    unsigned int loads = 0;

    /// What came of it, in one sentence without a full stop: the outcome and what it is about. Since version
    /// 0.1.
    VRL_API CString Explain() const;
};

} // namespace vorlund
