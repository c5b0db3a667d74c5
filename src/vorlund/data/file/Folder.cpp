#include "vorlund/data/file/Folder.h"

#include "vorlund/api/PathReason.h"
#include "vorlund/data/file/FileSystem.h"
#include "vorlund/data/file/PathText.h"

#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>

namespace vorlund {
namespace {

using filesystem::TEntryKind;

constexpr const wchar* kFile = VRL_L("src/vorlund/data/file/Folder_win32");
constexpr const wchar* kInitialize = VRL_L("vorlund::CFolder::Initialize");

constexpr TFailure kCannotFind{kInitialize, kFile, 128, VRL_L("Cannot find '%s'")};
constexpr TFailure kIsNoDirectory{kInitialize, kFile, 134, VRL_L("'%s' is not a directory")};

/// True when nothing of kind `kind` stands at `path` any more. An entry about which the system does not tell
/// has not gone: its initialisation may say why.
bool HasVanished(const wchar* path, TEntryKind kind) {
    const TEntryKind now = filesystem::GetKind(path);
    return now != kind && now != TEntryKind::Unknown;
}

/// A new object initialised with `path`; empty when the entry has vanished since the search saw it. The
/// question comes first because an exception would reach the debugger output.
template <class TEntry> CRefPtr<TEntry> MakeEntry(const CId& classId, const wchar* path, TEntryKind kind) {
    if (HasVanished(path, kind)) return {};
    auto entry = CreateAs<TEntry>(classId);
    if (!entry) return {};
    try {
        entry->Initialize(path);
    } catch (const CFileAccessException&) {
        if (!HasVanished(path, kind)) throw;
        return {};
    }
    return entry;
}

/// A new list of the entries of kind `kind`, in the order of the search. No name is special: "." and ".." are
/// directories like any other.
template <class TEntry> IObjectList* Enumerate(const wchar* folderPath, const CId& classId, TEntryKind kind) {
    auto list = CreateAs<IObjectList>(classid::CObjectList);
    if (!list || !*folderPath) return list.Detach();
    filesystem::CFolderSearch search(folderPath);
    while (search.Next()) {
        if (search.GetKind() != kind) continue;
        CString path(folderPath);
        path += search.GetName();
        if (const auto entry = MakeEntry<TEntry>(classId, path, kind)) list->AddObject(entry.Get());
    }
    return list.Detach();
}

} // namespace

IObjectList* CFolder::EnumerateFiles() {
    return Enumerate<IFile>(path_, classid::CFile, TEntryKind::File);
}

IObjectList* CFolder::EnumerateFolders() {
    return Enumerate<IFolder>(path_, classid::CFolder, TEntryKind::Directory);
}

CString CFolder::GetName() {
    return pathtext::GetFolderName(path_);
}

void CFolder::Initialize(const wchar* path) {
    if (initialized_) return;
    // The path as given is what is asked for: "" names nothing, and "file/" does not become a file.
    const TEntryKind kind = filesystem::GetKind(path);
    if (kind == TEntryKind::File)
        Raise<CFileAccessException>(kIsNoDirectory, PathReason(kIsNoDirectory.reason, path));
    if (kind != TEntryKind::Directory)
        Raise<CFileAccessException>(kCannotFind, PathReason(kCannotFind.reason, path));
    path_ = pathtext::AsFolder(path);
    initialized_ = true;
}

} // namespace vorlund
