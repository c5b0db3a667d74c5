// An existing file by name.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/ObjectImpl.h>

namespace vorlund {

/// Remembers a path that named a file when it was initialised; opens nothing by itself.
class CFile : public CObjectImpl<IFile> {
public:
    static constexpr CId ClassId = classid::CFile;

    CString GetTitle() override;
    CString GetFolderPath() override;
    CString GetExtension() override;
    IFolder* GetFolder() override;
    CString GetName() override;
    CString GetPath() override { return path_; }
    IFile* Initialize(const wchar* path) override;
    IFileInputStream* OpenInputStream() override;
    IFileOutputStream* OpenOutputStream() override;

    /// `Initialize` for a caller who has just seen that the path names a file.
    void InitializeSeen(const wchar* path);

private:
    CString path_;
    bool initialized_ = false;
};

} // namespace vorlund
