// Loaded before the C library: reads of one file, by its name, fail from a position on.
#define _FILE_OFFSET_BITS 64

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <dlfcn.h>
#include <unistd.h>

namespace {

bool IsUnreadable(int file) {
    char link[64];
    char name[4096];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t length = readlink(link, name, sizeof name);
    return length > 0 &&
           std::string_view(name, static_cast<std::size_t>(length)).ends_with("/unreadable.wav");
}

} // namespace

extern "C" __attribute__((visibility("default"))) ssize_t pread64(int file, void* buffer, size_t size,
                                                                  off_t position) {
    using TRead = ssize_t(int, void*, size_t, off_t);
    static const auto read = reinterpret_cast<TRead*>(dlsym(RTLD_NEXT, "pread64"));
    const char* const limit = std::getenv("VORLUND_TEST_READ_LIMIT");
    if (!limit || !IsUnreadable(file)) return read(file, buffer, size, position);
    const off_t rest = std::max<off_t>(std::atoll(limit) - position, 0);
    if (rest > 0) return read(file, buffer, std::min(size, static_cast<size_t>(rest)), position);
    const char* const isError = std::getenv("VORLUND_TEST_READ_ERROR");
    if (!isError || std::strcmp(isError, "1") != 0) return 0;
    errno = EIO;
    return -1;
}
