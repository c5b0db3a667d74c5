#include "support/GuardedUnits.h"

#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace vorlund::test {

CGuardedUnits::CGuardedUnits()
    : memory_(nullptr), size_(2 * static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
    void* memory =
        mmap(nullptr, size_ + size_ / 2, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    memory_ = static_cast<char*>(memory);
    mprotect(memory_ + size_, size_ / 2, PROT_NONE);
}

CGuardedUnits::~CGuardedUnits() {
    munmap(memory_, size_ + size_ / 2);
}

} // namespace vorlund::test
