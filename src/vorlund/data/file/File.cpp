#include "vorlund/data/file/File.h"

#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/api/values/PathReason.h"
#include "vorlund/data/file/FileSystem.h"
#include "vorlund/data/file/PathText.h"

#include <vorlund/Exception.h>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/file/File_win32");
constexpr const wchar* kInitialize = VRL_L("vorlund::CFile::Initialize");

constexpr TFailure kNoFolder{VRL_L("vorlund::CFile::GetFolder"), kFile, 55, VRL_L("Cannot create folder")};
constexpr TFailure kCannotFind{kInitialize, kFile, 84, VRL_L("Cannot find '%s'")};
constexpr TFailure kIsDirectory{kInitialize, kFile, 90, VRL_L("'%s' is a directory")};
constexpr TFailure kNoInputStream{VRL_L("vorlund::CFile::OpenInputStream"), kFile, 102,
                                  VRL_L("Cannot create file input stream")};
constexpr TFailure kNoOutputStream{VRL_L("vorlund::CFile::OpenOutputStream"), kFile, 112,
                                   VRL_L("Cannot create file output stream")};

} // namespace

CString CFile::GetTitle() {
    return pathtext::GetTitle(GetName());
}

CString CFile::GetFolderPath() {
    return pathtext::GetFolder(path_);
}

CString CFile::GetExtension() {
    return pathtext::GetExtension(GetName());
}

IFolder* CFile::GetFolder() {
    if (!initialized_) return nullptr;
    auto folder = CreateOrRaise<IFolder>(classid::CFolder, kNoFolder);
    folder->Initialize(GetFolderPath());
    return folder.Detach();
}

CString CFile::GetName() {
    return pathtext::GetName(path_);
}

IFile* CFile::Initialize(const wchar* path) {
    if (initialized_) return this;
    const filesystem::TEntryKind kind = filesystem::GetKind(path);
    if (kind == filesystem::TEntryKind::Directory)
        Raise<CFileAccessException>(kIsDirectory, PathReason(kIsDirectory.reason, path));
    if (kind != filesystem::TEntryKind::File)
        Raise<CFileAccessException>(kCannotFind, PathReason(kCannotFind.reason, path));
    InitializeSeen(path);
    return this;
}

void CFile::InitializeSeen(const wchar* path) {
    path_ = pathtext::WithForwardSlashes(path);
    initialized_ = true;
}

IFileInputStream* CFile::OpenInputStream() {
    if (!initialized_) return nullptr;
    auto stream = CreateOrRaise<IFileInputStream>(classid::CFileInputStream, kNoInputStream);
    stream->Open(path_);
    return stream.Detach();
}

IFileOutputStream* CFile::OpenOutputStream() {
    if (!initialized_) return nullptr;
    auto stream = CreateOrRaise<IFileOutputStream>(classid::CFileOutputStream, kNoOutputStream);
    stream->Open(path_, false);
    return stream.Detach();
}

} // namespace vorlund
