// Stands before the C library's functions in the whole program, which is linked with the library.
#include "devices/audio/RealtimeWatch_linux.h"

#include <cerrno>
#include <cstdarg>
#include <cstddef>

#include <dlfcn.h>
#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void __libc_free(void* memory);
}

namespace {

struct TSeen {
    bool isWatching = false;
    int memoryCalls = 0;
    int waits = 0;
};
thread_local constinit TSeen seen;

void NoteMemory() {
    if (seen.isWatching) ++seen.memoryCalls;
}
void NoteWait() {
    if (seen.isWatching) ++seen.waits;
}

template <class TFunction> TFunction Next(const char* name) {
    return reinterpret_cast<TFunction>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

void* malloc(std::size_t size) {
    NoteMemory();
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    NoteMemory();
    return __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) {
    NoteMemory();
    return __libc_realloc(memory, size);
}
void free(void* memory) {
    if (memory) NoteMemory();
    __libc_free(memory);
}

int pthread_mutex_lock(pthread_mutex_t* mutex) {
    static const auto next = Next<int (*)(pthread_mutex_t*)>("pthread_mutex_lock");
    NoteWait();
    return next(mutex);
}
int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    static const auto next = Next<int (*)(pthread_cond_t*, pthread_mutex_t*)>("pthread_cond_wait");
    NoteWait();
    return next(condition, mutex);
}
long syscall(long number, ...) {
    using TCall = long (*)(long, ...);
    static const auto next = Next<TCall>("syscall");
    va_list list;
    va_start(list, number);
    long arguments[6];
    for (long& argument : arguments) argument = va_arg(list, long);
    va_end(list);
    const long operation = arguments[1] & FUTEX_CMD_MASK;
    if (number == SYS_futex && operation != FUTEX_WAKE) NoteWait();
    return next(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]);
}

} // extern "C"

namespace vorlund::test {

CRealtimeWatch::CRealtimeWatch() {
    seen = {true, 0, 0};
}
CRealtimeWatch::~CRealtimeWatch() {
    seen.isWatching = false;
}
int CRealtimeWatch::GetMemoryCalls() const {
    return seen.memoryCalls;
}
int CRealtimeWatch::GetWaits() const {
    return seen.waits;
}

} // namespace vorlund::test
