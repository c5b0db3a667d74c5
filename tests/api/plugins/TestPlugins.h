/// \file
/// Folders with plug-ins of the tests' own.
#pragma once

#include "api/plugins/LoadedModules.h"
#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"

#include <vorlund/Exception.h>

#include <filesystem>
#include <string>

namespace vorlund::test {

/// What the plug-in "raising" raises from its init entry.
inline constexpr TFailure kCannotStart{VRL_L("VrlInitPlugin"), VRL_L("tests/plugins/raising"), 7,
                                       VRL_L("Plug-in cannot start")};

/// The file of a plug-in of the tests.
inline fs::path PluginFile(const std::string& name) {
    return BesideProgram("testplugins") / (name + kPluginEnding);
}

/// Lines of a child, without those about the folders of this build, which may be open to others.
inline std::string WithoutWarnings(std::string text) {
    std::erase(text, '\r');
    for (std::size_t at; (at = text.find("output Plugin folder '")) != std::string::npos;)
        text.erase(at, text.find('\n', at) + 1 - at);
    return text;
}

/// A new folder with copies of plug-ins, removed at the end.
class CPluginFolder {
public:
    fs::path At(const fs::path& file) const { return folder_.GetPath() / file; }
    /// A path with the ending of plug-ins.
    fs::path PathOf(const fs::path& name) const {
        return At(name.native() + fs::path(kPluginEnding).native());
    }

    /// Copies plug-in `name` to the folder, under another file name if one is given; returns its path there.
    fs::path Add(const std::string& name, const fs::path& file = {}) const {
        const fs::path to = file.empty() ? PathOf(name) : At(file);
        fs::copy_file(PluginFile(name), to);
        return to;
    }

    wstring GetPath() const { return ToVorlund(folder_.GetPath()); }
    const fs::path& GetFolder() const { return folder_.GetPath(); }

private:
    CTemporaryFolder folder_;
};

} // namespace vorlund::test
