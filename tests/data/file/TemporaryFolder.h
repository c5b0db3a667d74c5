/// \file
/// A folder of a test's own, and paths between the two text worlds.
#pragma once

#include "support/LibraryScope.h"
#include "support/Text.h"

#include <vorlund/Path.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <system_error>

namespace vorlund::test {

namespace fs = std::filesystem;

/// `path` as the library takes it, with "/" between folders.
inline wstring ToVorlund(const fs::path& path) {
    const std::u8string text = path.generic_u8string();
    return PathFromUtf8(reinterpret_cast<const char*>(text.c_str()));
}

/// The other way.
inline fs::path ToPath(const wstring& path) {
    const std::string text = PathToUtf8(path.c_str());
    return fs::path(std::u8string(text.begin(), text.end()));
}

/// `text` with every "/" turned into "\".
inline wstring WithBackslashes(wstring text) {
    for (wchar& unit : text) {
        if (unit == VRL_L('/')) unit = VRL_L('\\');
    }
    return text;
}

inline std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void WriteFile(const fs::path& path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(file.flush()) << path;
}

/// A new empty folder, removed with all that is in it at the end.
class CTemporaryFolder {
public:
    CTemporaryFolder() {
        std::random_device random;
        do {
            path_ = fs::temp_directory_path() / ("vorlund-test-" + std::to_string(random()));
        } while (!fs::create_directory(path_));
    }
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;
    ~CTemporaryFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }

    const fs::path& GetPath() const { return path_; }

private:
    fs::path path_;
};

/// Makes a folder the working one for the length of a block.
class CWorkingFolder {
public:
    explicit CWorkingFolder(const fs::path& folder) : former_(fs::current_path()) {
        fs::current_path(folder);
    }
    CWorkingFolder(const CWorkingFolder&) = delete;
    CWorkingFolder& operator=(const CWorkingFolder&) = delete;
    ~CWorkingFolder() {
        std::error_code ignored;
        fs::current_path(former_, ignored);
    }

private:
    const fs::path former_;
};

/// A test with an open library and a folder of its own.
class CFileTest : public testing::Test {
protected:
    /// Writes `bytes` to `name` in the folder; gives its path.
    fs::path Put(const fs::path& name, std::string_view bytes = {}) const {
        const fs::path path = At(name);
        fs::create_directories(path.parent_path());
        WriteFile(path, bytes);
        return path;
    }
    fs::path At(const fs::path& name) const { return folder_.GetPath() / name; }

    CTemporaryFolder folder_;
    CLibraryScope library_;
};

} // namespace vorlund::test
