#include "vorlund/data/file/Folder.h"

#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/api/values/PathReason.h"
#include "vorlund/data/file/EntryObject.h"
#include "vorlund/data/file/File.h"
#include "vorlund/data/file/PathText.h"

#include <vorlund/Exception.h>

namespace vorlund {
namespace {

using filesystem::TEntryKind;

constexpr const wchar* kFile = VRL_L("src/vorlund/data/file/Folder_win32");
constexpr const wchar* kEnumerateFiles = VRL_L("vorlund::CFolder::EnumerateFiles");
constexpr const wchar* kEnumerateFolders = VRL_L("vorlund::CFolder::EnumerateFolders");
constexpr const wchar* kInitialize = VRL_L("vorlund::CFolder::Initialize");
constexpr const wchar* kCannotSearch = VRL_L("Cannot search '%s'");
constexpr const wchar* kNoList = VRL_L("Cannot create object list");

constexpr TFailure kNoFileList{kEnumerateFiles, kFile, 42, kNoList};
constexpr TFailure kNoFile{kEnumerateFiles, kFile, 57, VRL_L("Cannot create file")};
constexpr TFailure kCannotSearchFiles{kEnumerateFiles, kFile, 64, kCannotSearch};
constexpr TFailure kNoFolderList{kEnumerateFolders, kFile, 79, kNoList};
constexpr TFailure kNoFolder{kEnumerateFolders, kFile, 94, VRL_L("Cannot create folder")};
constexpr TFailure kCannotSearchFolders{kEnumerateFolders, kFile, 101, kCannotSearch};
constexpr TFailure kCannotFind{kInitialize, kFile, 128, VRL_L("Cannot find '%s'")};
constexpr TFailure kIsNoDirectory{kInitialize, kFile, 134, VRL_L("'%s' is not a directory")};

/// What an enumeration is about.
struct TSelection {
    TEntryKind kind;
    const CId& classId;
    const TFailure& noList;
    const TFailure& noEntry;
    const TFailure& cannotSearch;
};

/// A new object initialised with `path`; empty when the entry is known to have vanished since the search saw
/// it, or cannot be reached. `TOwn` is the library's own class, which needs not ask the system again.
template <class TEntry, class TOwn>
CRefPtr<TEntry> MakeEntry(const filesystem::CFolderSearch& search, const TSelection& selection,
                          const wchar* path) {
    // Asked before the object is made: nothing is made of an entry that is left out.
    if (!search.IsSure() && search.LookAgain(path) != selection.kind) return {};
    auto entry = CreateOrRaise<TEntry>(selection.classId, selection.noEntry);
    if (auto* const own = dynamic_cast<TOwn*>(entry.Get()))
        own->InitializeSeen(path);
    else if (!filesystem::InitializeIfThere(*entry, path, selection.kind))
        return {};
    return entry;
}

/// A new list of the selected entries in the order of the search.
template <class TEntry, class TOwn>
IObjectList* Enumerate(const TSelection& selection, const wchar* folderPath) {
    auto list = CreateOrRaise<IObjectList>(classid::CObjectList, selection.noList);
    if (!*folderPath) return list.Detach();
    filesystem::CFolderSearch search(folderPath);
    wstring path(folderPath);
    const std::size_t folderLength = path.size();
    while (search.Next()) {
        // Kept for callers: no name is special, so "." and ".." are directories like any other.
        if (search.GetKind() != selection.kind) continue;
        path.resize(folderLength);
        path += search.GetName();
        if (const auto entry = MakeEntry<TEntry, TOwn>(search, selection, path.c_str()))
            list->AddObject(entry.Get());
    }
    if (search.HasFailed())
        Raise<CFileAccessException>(selection.cannotSearch,
                                    PathReason(selection.cannotSearch.reason, folderPath));
    return list.Detach();
}

} // namespace

IObjectList* CFolder::EnumerateFiles() {
    return Enumerate<IFile, CFile>(
        {TEntryKind::File, classid::CFile, kNoFileList, kNoFile, kCannotSearchFiles}, path_);
}

IObjectList* CFolder::EnumerateFolders() {
    return Enumerate<IFolder, CFolder>(
        {TEntryKind::Directory, classid::CFolder, kNoFolderList, kNoFolder, kCannotSearchFolders}, path_);
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
    InitializeSeen(path);
}

void CFolder::InitializeSeen(const wchar* path) {
    path_ = pathtext::AsFolder(path);
    initialized_ = true;
}

} // namespace vorlund
