// Loaded before a program (LD_PRELOAD), refuses it memory: the allocation whose number is in the environment,
// from 1 on, and all that follow it unless only one is to be refused. What the loader takes counts too.
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <unistd.h>

// The allocation functions of the C library by their other names.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
// NOLINTEND(bugprone-reserved-identifier)
}

namespace {

long calls = 0;
long refused = -1; // -1: not asked yet
bool isOnce = false;

bool IsRefused() {
    if (!environ) return false;
    if (refused < 0) {
        // NOLINTBEGIN(concurrency-mt-unsafe): the first allocation comes before any other thread.
        const char* const number = std::getenv("VORLUND_TEST_REFUSE");
        refused = number ? std::strtol(number, nullptr, 10) : 0;
        isOnce = std::getenv("VORLUND_TEST_REFUSE_ONCE") != nullptr;
        // NOLINTEND(concurrency-mt-unsafe)
    }
    const long call = __atomic_add_fetch(&calls, 1, __ATOMIC_RELAXED);
    const bool is = refused > 0 && (isOnce ? call == refused : call >= refused);
    if (is) errno = ENOMEM;
    return is;
}

} // namespace

extern "C" {

void* malloc(std::size_t size) {
    return IsRefused() ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    return IsRefused() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) {
    return IsRefused() ? nullptr : __libc_realloc(memory, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
    return IsRefused() ? nullptr : __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    void* const aligned = memalign(alignment, size);
    if (!aligned) return ENOMEM;
    *memory = aligned;
    return 0;
}
}
