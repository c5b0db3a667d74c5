#include "support/GuardedUnits.h"

#include <new>
#include <windows.h>

namespace vorlund::test {

CGuardedUnits::CGuardedUnits() : memory_(nullptr), size_(0) {
    SYSTEM_INFO system;
    GetSystemInfo(&system);
    size_ = 2 * std::size_t{system.dwPageSize};
    // The page behind is reserved but never committed.
    void* memory = VirtualAlloc(nullptr, size_ + system.dwPageSize, MEM_RESERVE, PAGE_NOACCESS);
    if (!memory || !VirtualAlloc(memory, size_, MEM_COMMIT, PAGE_READWRITE)) throw std::bad_alloc();
    memory_ = static_cast<char*>(memory);
}

CGuardedUnits::~CGuardedUnits() {
    VirtualFree(memory_, 0, MEM_RELEASE);
}

} // namespace vorlund::test
