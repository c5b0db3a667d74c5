#include "vorlund/api/plugins/PluginFolder.h"

#include "vorlund/data/file/PathCodec_posix.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace vorlund::pluginfolder {
namespace {

bool IsOpen(const struct stat& status) {
    if (status.st_uid != 0 && status.st_uid != geteuid()) return true;
    return (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 && (status.st_mode & S_ISVTX) == 0;
}

} // namespace

bool IsOpenToOthers(const wchar* folder) {
    std::string bytes;
    if (!pathcodec::Encode(folder, bytes)) return false;
    const std::unique_ptr<char, void (*)(void*)> real(realpath(bytes.c_str(), nullptr), &std::free);
    if (!real) return false;
    // In the folder itself others may not even add files; the sticky bit does not keep them from that.
    struct stat status;
    if (stat(real.get(), &status) == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) return true;
    for (std::string path = real.get();;) {
        if (stat(path.c_str(), &status) == 0 && IsOpen(status)) return true;
        if (path.size() == 1) return false;
        path.resize(std::max<std::size_t>(path.rfind('/'), 1));
    }
}

} // namespace vorlund::pluginfolder
