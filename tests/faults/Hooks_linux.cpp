// Before any header: both names of a function that takes a file position are declared.
#define _LARGEFILE64_SOURCE

#include "faults/Hooks.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <set>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

// The attributes that the system's headers give its functions mean nothing here.
#pragma GCC diagnostic ignored "-Wignored-attributes"

namespace vorlund::faults {
namespace {

using TOpen = int (*)(const char*, int, mode_t);
using TOpenAt = int (*)(int, const char*, int, mode_t);
/// A record of the system, whichever of its forms the caller has.
using TStatAt = int (*)(int, const char*, void*, int);
using TStatHandle = int (*)(int, void*);
using TStatPath = int (*)(const char*, void*);

template <TImportName kName> void* realOpen = nullptr;

mode_t TakeMode(int flags, std::va_list list) {
    return flags & O_CREAT ? static_cast<mode_t>(va_arg(list, int)) : 0;
}

int RefuseToOpen() {
    errno = EMFILE;
    return -1;
}

template <TImportName kName> int OpenOrFail(const char* path, int flags, ...) {
    std::va_list list;
    va_start(list, flags);
    const mode_t mode = TakeMode(flags, list);
    va_end(list);
    if (MustFail(TFaultKind::Open, __builtin_return_address(0))) return RefuseToOpen();
    return reinterpret_cast<TOpen>(realOpen<kName>)(path, flags, mode);
}

template <TImportName kName> int OpenAtOrFail(int folder, const char* path, int flags, ...) {
    std::va_list list;
    va_start(list, flags);
    const mode_t mode = TakeMode(flags, list);
    va_end(list);
    if (MustFail(TFaultKind::Open, __builtin_return_address(0))) return RefuseToOpen();
    return reinterpret_cast<TOpenAt>(realOpen<kName>)(folder, path, flags, mode);
}

template <TImportName kName> THook HookOpen() {
    return {kName.characters, reinterpret_cast<void*>(&OpenOrFail<kName>), &realOpen<kName>};
}

template <TImportName kName> THook HookOpenAt() {
    return {kName.characters, reinterpret_cast<void*>(&OpenAtOrFail<kName>), &realOpen<kName>};
}

void* realDlopen = nullptr;

/// What is loaded by a caught module is caught as well.
void* LoadOrFail(const char* path, int flags) {
    if (MustFail(TFaultKind::Load, __builtin_return_address(0))) return nullptr;
    void* const module = reinterpret_cast<void* (*)(const char*, int)>(realDlopen)(path, flags);
    if (module) InstallHooks();
    return module;
}

/// What fails in modules that are loaded, before they are asked for: their symbols.
template <TImportName kName, class TFunction> THook FailingSymbol() {
    return Failing<kName, TFunction>(TFaultKind::Load, static_cast<void*>(nullptr), 0);
}

std::vector<THook> MakeHooks() {
    using enum TFaultKind;
    constexpr ssize_t kNone = -1;
    std::FILE* const noFile = nullptr;
    DIR* const noFolder = nullptr;
    char* const noPath = nullptr;
    const std::size_t nothing = 0;
    std::vector<THook> hooks = GetMemoryHooks();
    hooks.insert(hooks.end(),
                 {
                     HookOpen<"open">(),
                     HookOpen<"open64">(),
                     HookOpenAt<"openat">(),
                     HookOpenAt<"openat64">(),
                     Failing<"pipe2", decltype(&pipe2)>(Open, -1, EMFILE),
                     Failing<"socketpair", decltype(&socketpair)>(Open, -1, EMFILE),
                     Failing<"fopen", decltype(&fopen)>(Open, noFile, EMFILE),
                     Failing<"fopen64", decltype(&fopen64)>(Open, noFile, EMFILE),
                     Failing<"fdopen", decltype(&fdopen)>(Open, noFile, ENOMEM),
                     Failing<"opendir", decltype(&opendir)>(Open, noFolder, EMFILE),
                     Failing<"fdopendir", decltype(&fdopendir)>(Open, noFolder, ENOMEM),
                     Failing<"readdir", decltype(&readdir)>(Look, static_cast<dirent*>(nullptr), EIO),
                     Failing<"readdir64", decltype(&readdir64)>(Look, static_cast<dirent64*>(nullptr), EIO),
                     Failing<"fstat", TStatHandle>(Look, -1, EIO),
                     Failing<"fstat64", TStatHandle>(Look, -1, EIO),
                     Failing<"__fstat64_time64", TStatHandle>(Look, -1, EIO),
                     Failing<"fstatat", TStatAt>(Look, -1, EIO),
                     Failing<"fstatat64", TStatAt>(Look, -1, EIO),
                     Failing<"__fstatat64_time64", TStatAt>(Look, -1, EIO),
                     Failing<"stat", TStatPath>(Look, -1, EIO),
                     Failing<"stat64", TStatPath>(Look, -1, EIO),
                     Failing<"lstat", TStatPath>(Look, -1, EIO),
                     Failing<"lstat64", TStatPath>(Look, -1, EIO),
                     Failing<"readlink", decltype(&readlink)>(Look, kNone, EIO),
                     Failing<"realpath", decltype(&realpath)>(Look, noPath, EIO),
                     Failing<"read", decltype(&read)>(Read, kNone, EIO),
                     Failing<"pread", decltype(&pread)>(Read, kNone, EIO),
                     Failing<"pread64", decltype(&pread64)>(Read, kNone, EIO),
                     Failing<"fread", decltype(&fread)>(Read, nothing, EIO),
                     Failing<"write", decltype(&write)>(Write, kNone, ENOSPC),
                     Failing<"pwrite", decltype(&pwrite)>(Write, kNone, ENOSPC),
                     Failing<"pwrite64", decltype(&pwrite64)>(Write, kNone, ENOSPC),
                     Failing<"writev", decltype(&writev)>(Write, kNone, ENOSPC),
                     Failing<"send", decltype(&send)>(Write, kNone, EPIPE),
                     Failing<"fwrite", decltype(&fwrite)>(Write, nothing, ENOSPC),
                     Failing<"fwrite_unlocked", decltype(&fwrite_unlocked)>(Write, nothing, ENOSPC),
                     Failing<"fflush", decltype(&fflush)>(Write, EOF, ENOSPC, TFailing::AfterAll),
                     Failing<"lseek", decltype(&lseek)>(Seek, static_cast<off_t>(-1), EIO),
                     Failing<"lseek64", decltype(&lseek64)>(Seek, static_cast<off64_t>(-1), EIO),
                     Failing<"fseeko", decltype(&fseeko)>(Seek, -1, EIO),
                     Failing<"fseeko64", decltype(&fseeko64)>(Seek, -1, EIO),
                     Failing<"ftello", decltype(&ftello)>(Seek, static_cast<off_t>(-1), EIO),
                     Failing<"ftello64", decltype(&ftello64)>(Seek, static_cast<off64_t>(-1), EIO),
                     Failing<"close", decltype(&close)>(Close, -1, EIO, TFailing::AfterAll),
                     Failing<"fclose", decltype(&fclose)>(Close, EOF, ENOSPC, TFailing::AfterAll),
                     Failing<"rename", decltype(&rename)>(Rename, -1, EACCES),
                     Failing<"mmap", decltype(&mmap)>(Map, MAP_FAILED, ENOMEM),
                     Failing<"mmap64", decltype(&mmap64)>(Map, MAP_FAILED, ENOMEM),
                     Failing<"pthread_create", decltype(&pthread_create)>(Thread, EAGAIN, 0),
                     Failing<"posix_spawn", decltype(&posix_spawn)>(Process, EAGAIN, 0),
                     Failing<"posix_spawn_file_actions_addclosefrom_np",
                             decltype(&posix_spawn_file_actions_addclosefrom_np)>(Process, ENOMEM, 0),
                     Failing<"posix_spawn_file_actions_adddup2", decltype(&posix_spawn_file_actions_adddup2)>(
                         Process, ENOMEM, 0),
                     Failing<"posix_spawn_file_actions_addopen", decltype(&posix_spawn_file_actions_addopen)>(
                         Process, ENOMEM, 0),
                     THook{"dlopen", reinterpret_cast<void*>(&LoadOrFail), &realDlopen},
                     FailingSymbol<"dlsym", decltype(&dlsym)>(),
                     FailingSymbol<"dlvsym", decltype(&dlvsym)>(),
                 });
    return hooks;
}

/// What the library takes from the system and the language's runtime that gives no error, or only for
/// arguments that it never passes.
const std::set<std::string> kUnfailing{
    // Exceptions, start and end of a module.
    "_Unwind_Resume", "__cxa_allocate_exception", "__cxa_atexit", "__cxa_begin_catch", "__cxa_end_catch",
    "__cxa_finalize", "__cxa_free_exception", "__cxa_guard_acquire", "__cxa_guard_release",
    "__cxa_guard_abort", "__cxa_pure_virtual", "__cxa_rethrow", "__cxa_throw",
    "__cxa_throw_bad_array_new_length", "__dynamic_cast", "__gxx_personality_v0", "__gmon_start__",
    "__assert_fail", "_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable", "__tls_get_addr",
    "___tls_get_addr", "__stack_chk_fail",
    // Values.
    "__libc_single_threaded", "__divdi3", "__moddi3", "__udivdi3", "__umoddi3", "__errno_location",
    "clock_gettime", "__clock_gettime64", "dirfd", "fileno", "fmod", "frexp", "ldexp", "lround", "llround",
    "sqrt", "getpgrp", "tcgetpgrp", "ioctl", "memchr", "memcmp", "memcpy", "memmove", "memset", "strcmp",
    "strlen", "snprintf", "wcrtomb", "pthread_self", "sigaddset", "sigemptyset", "stderr", "stdout",
    "setvbuf", "fwide", "fcntl", "fcntl64", "__fcntl_time64", "environ", "ferror", "geteuid", "getpid",
    "towupper", "sigfillset",
    // Waiting and ending.
    "flockfile", "funlockfile", "nanosleep", "__nanosleep64", "poll", "pthread_join", "pthread_mutex_lock",
    "pthread_mutex_unlock", "pthread_sigmask", "raise", "syscall", "syslog", "closedir", "remove", "dlclose",
    "dladdr", "dlerror", "kill", "pthread_mutex_trylock", "sched_yield", "waitid", "waitpid",
    // Of a new process: what is only noted.
    "posix_spawn_file_actions_destroy", "posix_spawn_file_actions_init", "posix_spawnattr_destroy",
    "posix_spawnattr_init", "posix_spawnattr_setflags", "posix_spawnattr_setpgroup",
    "posix_spawnattr_setsigdefault", "posix_spawnattr_setsigmask"};

} // namespace

void SetLastFault(int error) {
    if (error) errno = error;
}

const std::vector<THook>& GetHooks() {
    static const std::vector<THook> hooks = MakeHooks();
    return hooks;
}

bool CannotFail(const std::string& import) {
    // The standard library's own functions allocate through what is caught.
    const bool isStandard = import.rfind("_ZSt", 0) == 0 || import.rfind("_ZNSt", 0) == 0 ||
                            import.rfind("_ZNKSt", 0) == 0 || import.rfind("_ZT", 0) == 0;
    const bool isSanitizer =
        import.rfind("__asan", 0) == 0 || import.rfind("__ubsan", 0) == 0 || import.rfind("__tsan", 0) == 0;
    return isStandard || isSanitizer || kUnfailing.count(import) != 0;
}

} // namespace vorlund::faults
