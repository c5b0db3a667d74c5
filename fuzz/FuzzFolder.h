/// \file
/// Where the targets that need files make them.
#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

namespace vorlund::fuzz {

/// A path that nothing has yet: in memory where the system has such a folder, because a disk is many times
/// slower.
inline std::filesystem::path NewPath() {
    namespace fs = std::filesystem;
    const fs::path memory = "/dev/shm";
    std::error_code ignored;
    // Windows takes the name for one on the current drive, which may have such a folder, too.
    const bool hasMemory = memory.is_absolute() && fs::is_directory(memory, ignored);
    const fs::path folder = hasMemory ? memory : fs::temp_directory_path();
    std::random_device random;
    for (;;) {
        fs::path path = folder / ("vorlund-fuzz-" + std::to_string(random()));
        if (!fs::exists(path)) return path;
    }
}

} // namespace vorlund::fuzz
