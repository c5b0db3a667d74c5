#include "ScanSide.h"

#include "vorlund/api/plugins/ScanProtocol.h"

#include <cstdio>
#include <cstdlib>

#include <sys/resource.h>
#include <unistd.h>

namespace {

int Number(const std::string& channel) {
    return static_cast<int>(std::strtol(channel.c_str(), nullptr, 10));
}

} // namespace

void EndQuietly() {
    // No files of memory for each bad plug-in.
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
}

void LimitTime() {
    // The process that started this one ends it; this is for the case that it has ended itself.
    alarm(2 * vorlund::pluginscan::kMaxScanSeconds);
}

void LimitMemory(unsigned int megabytes) {
    if (megabytes == 0) return;
    // What is there already: with a sanitizer, terabytes of addresses.
    unsigned long long pages = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
        char line[64] = {};
        if (std::fgets(line, sizeof line, file)) pages = std::strtoull(line, nullptr, 10);
        std::fclose(file);
    }
    const unsigned long long bytes =
        pages * static_cast<unsigned long long>(sysconf(_SC_PAGESIZE)) + (1ULL * megabytes << 20);
    if (bytes >= RLIM_INFINITY) return;
    const rlimit most{static_cast<rlim_t>(bytes), static_cast<rlim_t>(bytes)};
    setrlimit(RLIMIT_AS, &most);
}

bool Send(const std::string& channel, const void* bytes, std::size_t size) {
    const auto* const from = static_cast<const char*>(bytes);
    for (std::size_t sent = 0; sent < size;) {
        const ssize_t count = write(Number(channel), from + sent, size - sent);
        if (count <= 0) return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

bool Receive(const std::string& channel, void* bytes, std::size_t size) {
    auto* const to = static_cast<char*>(bytes);
    for (std::size_t filled = 0; filled < size;) {
        const ssize_t count = read(Number(channel), to + filled, size - filled);
        if (count <= 0) return false;
        filled += static_cast<std::size_t>(count);
    }
    return true;
}

void EndNow() {
    _exit(0);
}
