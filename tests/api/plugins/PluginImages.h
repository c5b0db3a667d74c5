/// \file
/// What the tests of the look at a plug-in's file share, whatever the system's format of such files is.
#pragma once

#include "vorlund/api/plugins/PluginImage.h"

#include "data/file/TemporaryFolder.h"

#include <string>

namespace vorlund::test {

/// Whether a file of these bytes is taken for a plug-in.
inline bool IsPlugin(const std::string& bytes) {
    const CTemporaryFolder folder;
    const fs::path file = folder.GetPath() / "image";
    WriteFile(file, bytes);
    return CImageFile(ToVorlund(file).c_str()).IsPlugin();
}

/// A change to a whole image, and whether it is still one of a plug-in.
template <class TImage> struct TImageRow {
    const char* name;
    void (*change)(TImage&);
    bool isPlugin;
};

} // namespace vorlund::test
