// An existing directory by name.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/ObjectImpl.h>

namespace vorlund {

/// Remembers a path that named a directory when it was initialised. Each enumeration searches it afresh.
class CFolder : public CObjectImpl<IFolder> {
public:
    static constexpr CId ClassId = classid::CFolder;

    IObjectList* EnumerateFiles() override;
    IObjectList* EnumerateFolders() override;
    CString GetName() override;
    CString GetPath() override { return path_; }
    void Initialize(const wchar* path) override;

    /// `Initialize` for a caller who has just seen that the path names a directory.
    void InitializeSeen(const wchar* path);

private:
    bool initialized_ = false;
    /// Ends in "/".
    CString path_;
};

} // namespace vorlund
