#include "data/file/UnreadablePlace.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>

#include <sys/mman.h>
#include <unistd.h>

namespace vorlund::test {

// The memory of the process, where a file is mapped with a page behind its end.
CUnreadablePlace::CUnreadablePlace() : path_(VRL_L("/proc/self/mem")) {
    std::FILE* const file = std::tmpfile();
    if (!file || ftruncate(fileno(file), kReadable) != 0) throw std::runtime_error("no temporary file");
    state_ = mmap(nullptr, 2 * kReadable, PROT_READ | PROT_WRITE, MAP_SHARED, fileno(file), 0);
    std::fclose(file);
    if (state_ == MAP_FAILED) throw std::runtime_error("no mapping");
    std::memset(state_, 'x', kReadable);
    start_ = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(state_));
}

CUnreadablePlace::~CUnreadablePlace() {
    munmap(state_, 2 * kReadable);
}

} // namespace vorlund::test
