// The plug-in store: where plug-ins are looked for, and which are loaded.
//
// From a plug-in's file to its first use: `LoadAvailablePlugins` (called by `CVorlund::Init`, Vorlund.cpp)
// lists the plug-in files of the folders and gives each name to `LoadPlugin`, which resolves the paths of
// that name and gives them to `TData::Load`. There a file is looked at (PluginImage.cpp), loaded, asked for
// its entry points (PluginModule.h) and initialised. Its entry point registers classes, decoders and devices
// with the stores of `v`; the first use is the next `CreateObject` of ClassStore.cpp, decoder search of
// data/codecs or `CreateDevice` of devices/DeviceClassStore.cpp that finds them.
//
// A plug-in's entry points may use the store, so nothing here keeps an iterator or a reference into its lists
// while one runs: lists are walked by index, and what is needed afterwards is copied. A module is unloaded
// only when its entry point has returned; one that has raised stays, because the exception may point into it.
#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/api/plugins/PluginImage.h"
#include "vorlund/api/plugins/PluginModule.h"
#include "vorlund/data/file/EntryObject.h"
#include "vorlund/data/file/PathText.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Debug.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/ObjectList.h>
#include <vorlund/PluginStore.h>
#include <vorlund/StringObject.h>

#include <algorithm>
#include <memory>
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

/// The end of the names of development variants.
constexpr TView kDevelopmentMark = VRL_L("_d");

struct TPlugin {
    /// Null when it has been closed.
    void* module;
    pluginmodule::TInitEntry init;
    pluginmodule::TCloseEntry close;
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

    bool IsPluginFile(const wchar* title, const wchar* extension) const {
        if (TView(title).ends_with(kDevelopmentMark)) return false;
        return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
    }

    /// Whether any folder has a plug-in, found without making objects and without messages.
    bool HasPlugins() const {
        return std::any_of(folders.begin(), folders.end(), [this](const CString& folder) {
            const CString prefix = pathtext::AsFolder(folder);
            filesystem::CFolderSearch search(prefix);
            while (search.Next()) {
                const wchar* const name = search.GetName();
                if (search.GetKind() == TEntryKind::File &&
                    IsPluginFile(pathtext::GetTitle(name), pathtext::GetExtension(name)) &&
                    CImageFile(prefix + name).IsPlugin())
                    return true;
            }
            return false;
        });
    }

    /// Loads and initialises one file, if it is a plug-in. The empty path names none.
    void Load(const CString& path, const CString& name) {
        if (!CImageFile(path).IsPlugin()) return;
        void* const module = pluginmodule::Load(path);
        if (!module) return;
        const auto init = pluginmodule::FindInitEntry(module);
        const auto close = pluginmodule::FindCloseEntry(module);
        if (!init || !close) {
            pluginmodule::Unload(module);
            return;
        }
        if (!init()) {
            pluginmodule::Unload(module);
            return;
        }
        try {
            plugins.push_back({module, init, close, name});
        } catch (...) {
            close();
            pluginmodule::Unload(module);
            throw;
        }
    }
};

CPluginStore::CPluginStore() {
    // The destructor does not run for a store that cannot be made whole.
    auto data = std::make_unique<TData>();
    data->extensions.push_back(pluginmodule::kExtension);
    // The folder of the application's executable, not of this library: an application finds the plug-ins
    // beside it, wherever the library is installed.
    const wstring host = pluginmodule::GetHostPath();
    const std::size_t separator = host.rfind(pluginmodule::kSeparator);
    if (separator != wstring::npos && separator != 0) {
        const CString folder(host.substr(0, separator).c_str());
        data->folders.push_back(folder);
        data->folders.push_back(pathtext::Join(folder, VRL_L("plugins"), pluginmodule::kSeparator));
    }
    data_ = data.release();
}

CPluginStore::~CPluginStore() {
    delete data_;
}

void CPluginStore::Init() {}

void CPluginStore::Close() {
    // Kept for existing callers: the records stay, and with them the names. A library that is opened again
    // must not close the plug-ins a second time, so each record gives up its module first.
    for (std::size_t i = 0; i < data_->plugins.size(); ++i) {
        void* const module = std::exchange(data_->plugins[i].module, nullptr);
        if (!module) continue;
        data_->plugins[i].close();
        pluginmodule::Unload(module);
    }
}

void CPluginStore::AddPluginPath(const wchar* path) {
    data_->folders.push_back(path);
}

void CPluginStore::AddPluginExtension(const wchar* extension) {
    data_->extensions.push_back(extension);
}

void CPluginStore::LoadPlugin(const wchar* name) {
    const CString wanted(name);
    // Kept for existing applications: a plug-in that is loaded already is loaded again, and a success does
    // not end the search.
    for (std::size_t folder = 0; folder < data_->folders.size(); ++folder) {
        const CString prefix = pathtext::Join(data_->folders[folder], wanted, pluginmodule::kSeparator);
        for (std::size_t i = 0; i < data_->extensions.size(); ++i) {
            const CString candidate = prefix + VRL_L(".") + data_->extensions[i];
            data_->Load(ResolveFile(candidate), wanted);
        }
    }
}

void CPluginStore::LoadAvailablePlugins() {
    // The enumeration makes an object of every file in the folders. It begins only where there is a plug-in,
    // so that the first object of an application without plug-ins is number 1.
    if (!data_->HasPlugins()) return;
    ForEachText(EnumerateAvailablePlugins(), [this](const CString& name) { LoadPlugin(name); });
}

bool CPluginStore::IsPluginLoaded(const wchar* name) const {
    return std::any_of(data_->plugins.begin(), data_->plugins.end(),
                       [name](const TPlugin& plugin) { return plugin.name == name; });
}

IObjectEnumerator* CPluginStore::EnumerateLoadedPlugins() const {
    auto names = CreateOrRaise<IPushObjectEnumerator>(classid::CPushObjectEnumerator, kNoLoadedEnumerator);
    for (const TPlugin& plugin : data_->plugins) PushName(*names, plugin.name, kNoLoadedString);
    return names.Detach();
}

IObjectEnumerator* CPluginStore::EnumerateAvailablePlugins() const {
    auto names = CreateOrRaise<IPushObjectEnumerator>(classid::CPushObjectEnumerator, kNoAvailableEnumerator);
    for (const CString& path : data_->folders) {
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
            if (data_->IsPluginFile(title, file->GetExtension())) PushName(*names, title, kNoAvailableString);
        }
    }
    return names.Detach();
}

void CPluginStore::Dump() const {
    for (const TPlugin& plugin : data_->plugins)
        CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("Plugin %s is loaded"), plugin.name.GetBuffer());
    ForEachText(EnumerateAvailablePlugins(), [this](const CString& name) {
        if (!IsPluginLoaded(name))
            CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("Plugin %s is not loaded"), name.GetBuffer());
    });
}

} // namespace vorlund
