// The plug-in store: where plug-ins are looked for, and which are loaded.
//
// From a plug-in's file to its first use: `LoadAvailablePlugins` (called by `CVorlund::Init`, Vorlund.cpp)
// lists the plug-in files of the folders and gives each name to `LoadPlugin`, which resolves the paths of
// that name and gives them to `TData::Load`. There a file is looked at (PluginImage.cpp), tried in another
// process if that is wanted (PluginScan.cpp), loaded, asked for its entry points (PluginModule.h) and
// initialised; what came of it is kept (PluginReports.h). Its entry point registers classes, decoders and
// devices with the stores of `v`; the first use is the next `CreateObject` of ClassStore.cpp, decoder search
// of data/codecs or `CreateDevice` of devices/DeviceClassStore.cpp that finds them.
//
// A plug-in's entry points may use the store, so nothing here keeps an iterator or a reference into its lists
// while one runs: lists are walked by index, and what is needed afterwards is copied. A module is unloaded
// only when its entry point has returned; one that has raised stays, because the exception may point into it.
#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/api/objects/Registrations.h"
#include "vorlund/api/plugins/PluginFolder.h"
#include "vorlund/api/plugins/PluginImage.h"
#include "vorlund/api/plugins/PluginModule.h"
#include "vorlund/api/plugins/PluginReports.h"
#include "vorlund/api/plugins/PluginScan.h"
#include "vorlund/api/tables/TableClasses.h"
#include "vorlund/data/file/EntryObject.h"
#include "vorlund/data/file/PathText.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Debug.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/ObjectList.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/PluginStore.h>
#include <vorlund/StringObject.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlund {
namespace {

using filesystem::TEntryKind;
using TView = std::basic_string_view<wchar>;

constexpr const wchar* kFile = VRL_L("src/vorlund/api/PluginStore");
constexpr const wchar* kEnumerateAvailable = VRL_L("vorlund::CPluginStore::EnumerateAvailablePlugins");
constexpr const wchar* kEnumerateLoaded = VRL_L("vorlund::CPluginStore::EnumerateLoadedPlugins");
constexpr const wchar* kNoEnumerator = VRL_L("Cannot create enumerator");
constexpr const wchar* kNoString = VRL_L("Cannot create string object");

constexpr TFailure kNoAvailableEnumerator{kEnumerateAvailable, kFile, 138, kNoEnumerator};
constexpr TFailure kNoFolder{kEnumerateAvailable, kFile, 147, VRL_L("Cannot create folder")};
constexpr TFailure kNoAvailableString{kEnumerateAvailable, kFile, 162, kNoString};
constexpr TFailure kNoLoadedEnumerator{kEnumerateLoaded, kFile, 176, kNoEnumerator};
constexpr TFailure kNoLoadedString{kEnumerateLoaded, kFile, 181, kNoString};

/// Enough for an exception and what the runtime keeps beside it.
constexpr std::size_t kRoomToFail = 1024;

/// The end of the names of development variants.
constexpr TView kDevelopmentMark = VRL_L("_d");

struct TPlugin {
    /// Null when it has been closed.
    void* module;
    pluginmodule::TInitEntry init;
    pluginmodule::TCloseEntry close;
    /// Null without a table.
    std::shared_ptr<tables::TLife> table;
    /// The name under which it was loaded.
    CString name;
};

/// The full path of a file through a file object; empty when there is no such file. Whether it exists is
/// asked first, because the file object would answer by an exception, which the debugger output shows.
CString ResolveFile(const CString& candidate) {
    if (filesystem::GetKind(candidate) != TEntryKind::File) return {};
    const auto file = CreateAs<IFile>(classid::CFile);
    if (!file || !filesystem::InitializeIfThere(*file, candidate, TEntryKind::File)) return {};
    return file->GetPath();
}

void PushName(IPushObjectEnumerator& enumerator, const wchar* name, const TFailure& failure) {
    const auto item = CreateOrRaise<IStringObject>(classid::CStringObject, failure);
    item->SetString(name);
    enumerator.Push(item.Get());
}

/// Calls `act` with each text of an enumeration, which it releases.
template <class TAct> void ForEachText(IObjectEnumerator* texts, TAct act) {
    const auto owner = CRefPtr<IObjectEnumerator>::Adopt(texts);
    while (owner->HasNext()) {
        const auto item = CRefPtr<IObject>::Adopt(owner->GetNext()).Query<IStringObject>();
        act(item->GetString());
    }
}

} // namespace

struct CPluginStore::TData {
    std::vector<CString> folders;
    std::vector<CString> extensions;
    std::vector<TPlugin> plugins;
    CPluginReports reports;
    TPluginScanMode scanMode = PLUGIN_SCAN_NONE;
    /// Empty for the one at its usual places.
    CString scanHelper;
    TPluginFailureMode failureMode = PLUGIN_FAILURE_PASSES_ON;
    bool keepsModules = false;

    /// With the extension and the folders that every store begins with.
    TData() {
        extensions.push_back(pluginmodule::kExtension);
        // The folder of the application's executable, not of this library: an application finds the plug-ins
        // beside it, wherever the library is installed.
        const wstring host = pluginmodule::GetHostPath();
        const std::size_t separator = host.rfind(pluginmodule::kSeparator);
        if (separator == wstring::npos || separator == 0) return;
        const CString folder(host.substr(0, separator).c_str());
        folders.push_back(folder);
        folders.push_back(pathtext::Join(folder, VRL_L("plugins"), pluginmodule::kSeparator));
    }

    /// The data; made now if there was no memory for them before.
    static TData& Of(TData*& data) {
        if (!data) data = new TData;
        return *data;
    }

    /// The data, or null where there is no memory for them.
    static TData* MakeIfPossible() noexcept {
        // Raising takes memory too, and ends the process where there is none at all.
        void* const room = std::malloc(kRoomToFail);
        if (!room) return nullptr;
        std::free(room);
        try {
            return new TData;
        } catch (...) {
            return nullptr;
        }
    }

    bool IsPluginFile(const wchar* title, const wchar* extension) const {
        if (TView(title).ends_with(kDevelopmentMark)) return false;
        return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
    }

    /// Calls `act` with the path and the title of each file that has the name of a plug-in, until it returns
    /// true; returns that, or true when a folder cannot be searched. Makes no objects and prints nothing.
    template <class TAct> bool AnyCandidate(TAct act) const {
        return std::any_of(folders.begin(), folders.end(), [this, &act](const CString& folder) {
            const CString prefix = pathtext::AsFolder(folder);
            filesystem::CFolderSearch search(prefix);
            while (search.Next()) {
                const wchar* const name = search.GetName();
                const CString title = pathtext::GetTitle(name);
                if (search.GetKind() == TEntryKind::File &&
                    IsPluginFile(title, pathtext::GetExtension(name)) && act(prefix + name))
                    return true;
            }
            // The enumeration raises what has happened.
            return search.HasFailed();
        });
    }

    /// Whether any folder has a plug-in. What the candidates before it are is reported.
    bool FindPlugin() {
        return AnyCandidate([this](const CString& path) {
            const TPluginResult result = Judge(CImageFile(path).Look());
            if (result.outcome == PLUGIN_BEGUN) return true;
            reports.Set(reports.Begin(path), result);
            return false;
        });
    }

    /// Loads and initialises one file, if it is a plug-in, and reports what came of it. The empty path names
    /// none.
    TPluginOutcome Load(const CString& path, const CString& name) {
        if (path.Length() == 0) return PLUGIN_NO_PLUGIN;
        const std::size_t place = reports.Begin(path);
        try {
            const TPluginResult result = TryToLoad(path, name, place);
            reports.Set(place, result);
            return result.outcome;
        } catch (const std::bad_alloc&) {
            throw;
        } catch (...) {
            ReportRaised(place);
            if (failureMode == PLUGIN_FAILURE_PASSES_ON) throw;
            return PLUGIN_RAISED;
        }
    }

private:
    /// Reports the exception that is being handled; without memory, less of it.
    void ReportRaised(std::size_t place) noexcept {
        reports.Set(place, {PLUGIN_RAISED});
        try {
            reports.Set(place, DescribeRaised());
        } catch (const std::bad_alloc&) {
            // The outcome is there.
        }
    }

    /// What a look at a file means; `PLUGIN_BEGUN` when it may be loaded.
    static TPluginResult Judge(const TImageLook& look) {
        const wstring detail(look.detail.begin(), look.detail.end());
        switch (look.kind) {
        case TImageKind::Plugin:
            break;
        case TImageKind::NoLibrary:
            return {PLUGIN_NO_PLUGIN, 0, VRL_L("it is no shared library, or a damaged one")};
        case TImageKind::OtherMachine:
            return {PLUGIN_OTHER_MACHINE, 0, detail};
        case TImageKind::Cut:
            return {PLUGIN_CUT, 0, detail};
        case TImageKind::OtherLibrary:
            return {PLUGIN_NO_PLUGIN, 0, VRL_L("it is a shared library of another kind")};
        case TImageKind::OneEntry:
            return {PLUGIN_NO_ENTRY, 0, detail};
        }
        return {};
    }

    /// What the file is, and whether its record fits, without running any of it; `PLUGIN_BEGUN` when it may
    /// be loaded.
    TPluginResult Examine(const CString& path, std::size_t place) {
        const CImageFile image(path);
        TPluginResult refused = Judge(image.Look());
        if (refused.outcome != PLUGIN_BEGUN) return refused;
        const std::optional<TPluginInfoRecord> info = image.ReadInfo();
        if (!info) return {};
        reports.SetInfo(place, *info);
        const std::int32_t library = vorlund::GetVersion().number;
        if (IsPluginCompatible(info->libraryVersion, library)) return {};
        return {PLUGIN_INCOMPATIBLE, 0,
                DescribeVersion(info->libraryVersion) + VRL_L(", and this one is ") +
                    DescribeVersion(library)};
    }

    TPluginResult TryToLoad(const CString& path, const CString& name, std::size_t place) {
        TPluginResult refused = Examine(path, place);
        if (refused.outcome != PLUGIN_BEGUN) return refused;
        WarnOfFolder(pathtext::GetFolder(path));
        if (scanMode == PLUGIN_SCAN_CHILD) {
            TPluginResult result = Scan(path);
            if (result.outcome != PLUGIN_LOADED) return result;
        }
        pluginmodule::TRefusal refusal;
        void* const module = pluginmodule::Load(path, refusal);
        if (!module && !refusal.missing.empty())
            return {PLUGIN_MISSING_LIBRARY, refusal.error, refusal.missing};
        if (!module) return {PLUGIN_NOT_LOADABLE, refusal.error, refusal.text};
        const auto init = pluginmodule::FindInitEntry(module);
        const auto close = pluginmodule::FindCloseEntry(module);
        if (!init || !close) {
            pluginmodule::Unload(module);
            return {PLUGIN_NO_ENTRY};
        }
        registrations::TNotes notes;
        if (!Initialize(init, notes, place)) {
            // What it has registered all the same points into it.
            if (failureMode == PLUGIN_FAILURE_PASSES_ON || notes.items.empty()) pluginmodule::Unload(module);
            reports.SetNotes(place, notes);
            return {PLUGIN_DECLINED};
        }
        std::shared_ptr<tables::TLife> table;
        wstring badTable;
        try {
            reports.SetNotes(place, notes);
            badTable = OpenTable(module, place, notes, table);
            if (badTable.empty()) plugins.push_back({module, init, close, table, name});
        } catch (...) {
            if (table) table->isOpen = false;
            close();
            pluginmodule::Unload(module);
            throw;
        }
        if (badTable.empty()) return {PLUGIN_LOADED};
        close();
        // What it has registered itself points into it.
        if (failureMode == PLUGIN_FAILURE_PASSES_ON || notes.items.empty()) pluginmodule::Unload(module);
        return {PLUGIN_BAD_TABLE, 0, badTable};
    }

    /// Calls the init entry, and takes what it notes.
    bool Initialize(pluginmodule::TInitEntry init, registrations::TNotes& notes, std::size_t place) {
        const registrations::CTaker taker(notes);
        try {
            return init();
        } catch (...) {
            try {
                reports.SetNotes(place, notes);
            } catch (const std::bad_alloc&) {
                // What the plug-in has raised is what passes on.
            }
            throw;
        }
    }

    /// Registers what the table of an initialised plug-in has, if it has one, and gives its life to `table`,
    /// which the caller ends when this raises. Returns why it is refused, or nothing.
    wstring OpenTable(void* module, std::size_t place, registrations::TNotes notes,
                      std::shared_ptr<tables::TLife>& table) {
        const vorlund_plugin_table* const found = pluginmodule::FindTable(module);
        if (!found) return {};
        const registrations::CTaker taker(notes);
        wstring refusal;
        table = tables::Open(*found, refusal);
        reports.SetNotes(place, notes);
        return refusal;
    }

    TPluginResult Scan(const CString& path) const {
        const wstring helper =
            scanHelper.Length() > 0 ? wstring(scanHelper.GetBuffer()) : pluginscan::FindHelper();
        TPluginResult result =
            helper.empty() ? TPluginResult{PLUGIN_SCAN_NO_HELPER} : pluginscan::Scan(helper.c_str(), path);
        if (result.outcome >= PLUGIN_SCAN_NO_HELPER)
            CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("Plugin '%s' is left out: %s (%d)"),
                                 path.GetBuffer(), DescribeOutcome(result.outcome),
                                 static_cast<int>(result.code));
        return result;
    }

    /// Tells once of a folder in which others may put plug-ins of theirs.
    void WarnOfFolder(const CString& folder) {
        if (reports.Has(folder) || !pluginfolder::IsOpenToOthers(folder)) return;
        reports.Set(reports.Begin(folder), {PLUGIN_FOLDER_OPEN});
        CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("Plugin folder '%s': %s"), folder.GetBuffer(),
                             DescribeOutcome(PLUGIN_FOLDER_OPEN));
    }
};

// The store of `v` is built while the library is loaded, where nobody can catch anything. So memory that runs
// out there shows when the store is used.
CPluginStore::CPluginStore() : data_(TData::MakeIfPossible()) {}

CPluginStore::~CPluginStore() {
    delete data_;
}

void CPluginStore::Init() {}

void CPluginStore::Close() {
    // Kept for existing callers: the records stay, and with them the names. A library that is opened again
    // must not close the plug-ins a second time, so each record gives up its module first.
    if (!data_) return;
    for (std::size_t i = 0; i < data_->plugins.size(); ++i) {
        void* const module = std::exchange(data_->plugins[i].module, nullptr);
        if (!module) continue;
        // Objects of its table that are still there do not call it any more.
        if (const auto& table = data_->plugins[i].table) table->isOpen = false;
        data_->plugins[i].close();
        if (!data_->keepsModules) pluginmodule::Unload(module);
    }
}

void CPluginStore::AddPluginPath(const wchar* path) {
    TData::Of(data_).folders.push_back(path);
}

bool CPluginStore::HasPluginPath(const wchar* path) const {
    const CString wanted = pathtext::WithoutSeparator(path, pluginmodule::kSeparator);
    const auto& folders = TData::Of(data_).folders;
    return std::any_of(folders.begin(), folders.end(), [&wanted](const CString& folder) {
        return pathtext::WithoutSeparator(folder, pluginmodule::kSeparator) == wanted;
    });
}

void CPluginStore::AddPluginExtension(const wchar* extension) {
    TData::Of(data_).extensions.push_back(extension);
}

void CPluginStore::ClearPluginPaths() {
    TData::Of(data_).folders.clear();
}

void CPluginStore::SetScanMode(TPluginScanMode mode, const wchar* helper) {
    TData::Of(data_).scanHelper = CString(helper);
    TData::Of(data_).scanMode = mode;
}

void CPluginStore::KeepInProcess(bool keeps) noexcept {
    if (data_) data_->keepsModules = keeps;
}

void CPluginStore::SetFailureMode(TPluginFailureMode mode) {
    TData::Of(data_).failureMode = mode;
}

unsigned int CPluginStore::GetPluginPathCount() const {
    return static_cast<unsigned int>(TData::Of(data_).folders.size());
}

CString CPluginStore::GetPluginPath(unsigned int index) const {
    const TData& data = TData::Of(data_);
    return index < data.folders.size() ? data.folders[index] : CString();
}

void CPluginStore::LoadPlugin(const wchar* name) {
    TData& data = TData::Of(data_);
    const CString wanted(name);
    // Kept for existing applications: a plug-in that is loaded already is loaded again, and a success does
    // not end the search.
    for (std::size_t folder = 0; folder < data.folders.size(); ++folder) {
        const CString prefix = pathtext::Join(data.folders[folder], wanted, pluginmodule::kSeparator);
        for (std::size_t i = 0; i < data.extensions.size(); ++i) {
            const CString candidate = prefix + VRL_L(".") + data.extensions[i];
            data.Load(ResolveFile(candidate), wanted);
        }
    }
}

TPluginOutcome CPluginStore::LoadPluginFile(const wchar* path) {
    const CString file = ResolveFile(path);
    return TData::Of(data_).Load(file, pathtext::GetTitle(pathtext::GetName(file)));
}

void CPluginStore::LoadAvailablePlugins() {
    // The enumeration makes an object of every file in the folders. It begins only where there is a plug-in,
    // so that the first object of an application without plug-ins is number 1.
    if (!TData::Of(data_).FindPlugin()) return;
    ForEachText(EnumerateAvailablePlugins(), [this](const CString& name) { LoadPlugin(name); });
}

bool CPluginStore::IsPluginLoaded(const wchar* name) const {
    const TData& data = TData::Of(data_);
    return std::any_of(data.plugins.begin(), data.plugins.end(),
                       [name](const TPlugin& plugin) { return plugin.name == name; });
}

IObjectEnumerator* CPluginStore::EnumerateLoadedPlugins() const {
    auto names = CreateOrRaise<IPushObjectEnumerator>(classid::CPushObjectEnumerator, kNoLoadedEnumerator);
    for (const TPlugin& plugin : TData::Of(data_).plugins) PushName(*names, plugin.name, kNoLoadedString);
    return names.Detach();
}

IObjectEnumerator* CPluginStore::EnumerateAvailablePlugins() const {
    auto names = CreateOrRaise<IPushObjectEnumerator>(classid::CPushObjectEnumerator, kNoAvailableEnumerator);
    const TData& data = TData::Of(data_);
    for (const CString& path : data.folders) {
        const CString plainPath = pathtext::WithoutSeparator(path, pluginmodule::kSeparator);
        // Asked first, as for files.
        if (filesystem::GetKind(plainPath) == TEntryKind::Missing) continue;
        const auto folder = CreateOrRaise<IFolder>(classid::CFolder, kNoFolder);
        folder->Initialize(plainPath);
        const auto files = CRefPtr<IObjectList>::Adopt(folder->EnumerateFiles());
        const auto entries = CRefPtr<IObjectEnumerator>::Adopt(files->EnumerateObjects());
        while (entries->HasNext()) {
            const auto file = CRefPtr<IObject>::Adopt(entries->GetNext()).Query<IFile>();
            const CString title = file->GetTitle();
            if (data.IsPluginFile(title, file->GetExtension())) PushName(*names, title, kNoAvailableString);
        }
    }
    return names.Detach();
}

unsigned int CPluginStore::GetReportCount() const {
    return static_cast<unsigned int>(TData::Of(data_).reports.GetCount());
}

TPluginReport CPluginStore::GetReport(unsigned int index) const {
    return TData::Of(data_).reports.Get(index);
}

void CPluginStore::Dump() const {
    for (const TPlugin& plugin : TData::Of(data_).plugins)
        CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("Plugin %s is loaded"), plugin.name.GetBuffer());
    ForEachText(EnumerateAvailablePlugins(), [this](const CString& name) {
        if (!IsPluginLoaded(name))
            CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("Plugin %s is not loaded"), name.GetBuffer());
    });
}

} // namespace vorlund
