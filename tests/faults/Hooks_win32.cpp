#include "faults/Hooks.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <set>

#include <fcntl.h>
#include <io.h>
#include <pthread.h>
#include <sys/stat.h>
#include <windows.h>
// After windows.h, which it needs.
#include <mmsystem.h>

// The attributes that the system's headers give its functions mean nothing here.
#pragma GCC diagnostic ignored "-Wignored-attributes"

namespace vorlund::faults {
namespace {

using TOpenWide = int (*)(const wchar_t*, int, int);

void* realWopen = nullptr;

int WopenOrFail(const wchar_t* path, int flags, ...) {
    std::va_list list;
    va_start(list, flags);
    const int mode = flags & _O_CREAT ? va_arg(list, int) : 0;
    va_end(list);
    if (MustFail(TFaultKind::Open, __builtin_return_address(0))) {
        errno = EMFILE;
        return -1;
    }
    return reinterpret_cast<TOpenWide>(realWopen)(path, flags, mode);
}

void* realLoadLibrary = nullptr;
void* realLoadLibraryEx = nullptr;

/// What is loaded by a caught module is caught as well.
HMODULE NoteModule(HMODULE module) {
    const DWORD error = GetLastError();
    if (module) InstallHooks();
    SetLastError(error);
    return module;
}

HMODULE WINAPI LoadLibraryOrFail(const wchar_t* path) {
    if (MustFail(TFaultKind::Load, __builtin_return_address(0))) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    return NoteModule(reinterpret_cast<decltype(&LoadLibraryW)>(realLoadLibrary)(path));
}

HMODULE WINAPI LoadLibraryExOrFail(const wchar_t* path, HANDLE file, DWORD flags) {
    if (MustFail(TFaultKind::Load, __builtin_return_address(0))) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    return NoteModule(reinterpret_cast<decltype(&LoadLibraryExW)>(realLoadLibraryEx)(path, file, flags));
}

std::vector<THook> MakeHooks() {
    using enum TFaultKind;
    std::FILE* const noFile = nullptr;
    const HANDLE noHandle = nullptr;
    const HWND noWindow = nullptr;
    const std::size_t nothing = 0;
    std::vector<THook> hooks = GetMemoryHooks();
    hooks.insert(
        hooks.end(),
        {
            // The C runtime.
            THook{"_wopen", reinterpret_cast<void*>(&WopenOrFail), &realWopen},
            Failing<"_wfdopen", decltype(&_wfdopen)>(Open, noFile, ENOMEM),
            Failing<"_wfopen", decltype(&_wfopen)>(Open, noFile, EMFILE),
            Failing<"fopen", decltype(&fopen)>(Open, noFile, EMFILE),
            Failing<"_read", decltype(&_read)>(Read, -1, EIO),
            Failing<"fread", decltype(&fread)>(Read, nothing, EIO),
            Failing<"_write", decltype(&_write)>(Write, -1, ENOSPC),
            Failing<"fwrite", decltype(&fwrite)>(Write, nothing, ENOSPC),
            Failing<"fflush", decltype(&fflush)>(Write, EOF, ENOSPC, TFailing::AfterAll),
            Failing<"_lseeki64", decltype(&_lseeki64)>(Seek, static_cast<__int64>(-1), EINVAL),
            Failing<"_telli64", decltype(&_telli64)>(Seek, static_cast<__int64>(-1), EINVAL),
            Failing<"_filelengthi64", decltype(&_filelengthi64)>(Seek, static_cast<__int64>(-1), EINVAL),
            Failing<"fgetpos", decltype(&fgetpos)>(Seek, -1, EINVAL),
            Failing<"fsetpos", decltype(&fsetpos)>(Seek, -1, EINVAL),
            Failing<"_close", decltype(&_close)>(Close, -1, EIO, TFailing::AfterAll),
            Failing<"fclose", decltype(&fclose)>(Close, EOF, ENOSPC, TFailing::AfterAll),
            // The system.
            Failing<"CreateFileW", decltype(&CreateFileW)>(Open, INVALID_HANDLE_VALUE,
                                                           ERROR_TOO_MANY_OPEN_FILES),
            Failing<"FindFirstFileW", decltype(&FindFirstFileW)>(Open, INVALID_HANDLE_VALUE,
                                                                 ERROR_NOT_ENOUGH_MEMORY),
            Failing<"FindNextFileW", decltype(&FindNextFileW)>(Look, FALSE, ERROR_READ_FAULT),
            Failing<"GetFileAttributesW", decltype(&GetFileAttributesW)>(Look, INVALID_FILE_ATTRIBUTES,
                                                                         ERROR_NOT_ENOUGH_MEMORY),
            Failing<"GetFullPathNameW", decltype(&GetFullPathNameW)>(Look, DWORD{0}, ERROR_NOT_ENOUGH_MEMORY),
            Failing<"GetModuleFileNameW", decltype(&GetModuleFileNameW)>(Look, DWORD{0},
                                                                         ERROR_NOT_ENOUGH_MEMORY),
            Failing<"ReadFile", decltype(&ReadFile)>(Read, FALSE, ERROR_READ_FAULT),
            Failing<"WriteFile", decltype(&WriteFile)>(Write, FALSE, ERROR_DISK_FULL),
            Failing<"SetFilePointer", decltype(&SetFilePointer)>(Seek, INVALID_SET_FILE_POINTER, ERROR_SEEK),
            Failing<"SetFilePointerEx", decltype(&SetFilePointerEx)>(Seek, FALSE, ERROR_SEEK),
            Failing<"MoveFileExW", decltype(&MoveFileExW)>(Rename, FALSE, ERROR_ACCESS_DENIED),
            Failing<"CreateFileMappingW", decltype(&CreateFileMappingW)>(Map, noHandle,
                                                                         ERROR_NOT_ENOUGH_MEMORY),
            Failing<"MapViewOfFile", decltype(&MapViewOfFile)>(Map, static_cast<void*>(nullptr),
                                                               ERROR_NOT_ENOUGH_MEMORY),
            Failing<"CreateThread", decltype(&CreateThread)>(Thread, noHandle, ERROR_NOT_ENOUGH_MEMORY),
            Failing<"OpenThread", decltype(&OpenThread)>(Thread, noHandle, ERROR_NOT_ENOUGH_MEMORY),
            Failing<"pthread_create", decltype(&pthread_create)>(Thread, EAGAIN, 0),
            Failing<"CreateThreadpool", decltype(&CreateThreadpool)>(Thread, static_cast<PTP_POOL>(nullptr),
                                                                     ERROR_NOT_ENOUGH_MEMORY),
            Failing<"SetThreadpoolThreadMinimum", decltype(&SetThreadpoolThreadMinimum)>(
                Thread, FALSE, ERROR_NOT_ENOUGH_MEMORY),
            Failing<"CreateThreadpoolWork", decltype(&CreateThreadpoolWork)>(
                Thread, static_cast<PTP_WORK>(nullptr), ERROR_NOT_ENOUGH_MEMORY),
            Failing<"CreateThreadpoolWait", decltype(&CreateThreadpoolWait)>(
                Thread, static_cast<PTP_WAIT>(nullptr), ERROR_NOT_ENOUGH_MEMORY),
            Failing<"CreateNamedPipeW", decltype(&CreateNamedPipeW)>(Process, INVALID_HANDLE_VALUE,
                                                                     ERROR_NOT_ENOUGH_MEMORY),
            Failing<"CreateProcessW", decltype(&CreateProcessW)>(Process, FALSE, ERROR_NOT_ENOUGH_MEMORY),
            Failing<"InitializeProcThreadAttributeList", decltype(&InitializeProcThreadAttributeList)>(
                Process, FALSE, ERROR_NOT_ENOUGH_MEMORY),
            Failing<"UpdateProcThreadAttribute", decltype(&UpdateProcThreadAttribute)>(
                Process, FALSE, ERROR_NOT_ENOUGH_MEMORY),
            Failing<"CreateJobObjectW", decltype(&CreateJobObjectW)>(Process, noHandle,
                                                                     ERROR_NOT_ENOUGH_MEMORY),
            Failing<"SetInformationJobObject", decltype(&SetInformationJobObject)>(Process, FALSE,
                                                                                   ERROR_NOT_ENOUGH_MEMORY),
            Failing<"AssignProcessToJobObject", decltype(&AssignProcessToJobObject)>(Process, FALSE,
                                                                                     ERROR_ACCESS_DENIED),
            Failing<"CreatePipe", decltype(&CreatePipe)>(Open, FALSE, ERROR_NOT_ENOUGH_MEMORY),
            Failing<"SetHandleInformation", decltype(&SetHandleInformation)>(Open, FALSE,
                                                                             ERROR_NOT_ENOUGH_MEMORY),
            Failing<"PeekNamedPipe", decltype(&PeekNamedPipe)>(Read, FALSE, ERROR_BROKEN_PIPE),
            THook{"LoadLibraryW", reinterpret_cast<void*>(&LoadLibraryOrFail), &realLoadLibrary},
            THook{"LoadLibraryExW", reinterpret_cast<void*>(&LoadLibraryExOrFail), &realLoadLibraryEx},
            Failing<"GetProcAddress", decltype(&GetProcAddress)>(Load, static_cast<FARPROC>(nullptr),
                                                                 ERROR_PROC_NOT_FOUND),
            Failing<"CreateEventW", decltype(&CreateEventW)>(Event, noHandle, ERROR_NOT_ENOUGH_MEMORY),
            Failing<"DuplicateHandle", decltype(&DuplicateHandle)>(Event, FALSE, ERROR_NOT_ENOUGH_MEMORY),
            Failing<"timeSetEvent", decltype(&timeSetEvent)>(Timer, MMRESULT{0}, 0),
            Failing<"RegisterClassW", decltype(&RegisterClassW)>(Window, ATOM{0}, ERROR_NOT_ENOUGH_MEMORY),
            Failing<"CreateWindowExW", decltype(&CreateWindowExW)>(Window, noWindow, ERROR_NOT_ENOUGH_MEMORY),
            Failing<"LoadCursorW", decltype(&LoadCursorW)>(Window, static_cast<HCURSOR>(nullptr),
                                                           ERROR_NOT_ENOUGH_MEMORY),
        });
    return hooks;
}

/// What the library takes from the system and the language's runtime that gives no error, or only for
/// arguments that it never passes.
const std::set<std::string> kUnfailing{
    // Exceptions, start and end of a module.
    "_Unwind_Resume", "__cxa_allocate_exception", "__cxa_begin_catch", "__cxa_end_catch",
    "__cxa_free_exception", "__cxa_rethrow", "__cxa_throw", "__cxa_throw_bad_array_new_length",
    "__dynamic_cast", "__gxx_personality_v0", "__gxx_personality_seh0", "__deregister_frame_info",
    "__register_frame_info", "__emutls_get_address", "__cxa_guard_acquire", "__cxa_guard_release",
    "__cxa_guard_abort", "__cxa_pure_virtual", "_initterm", "_amsg_exit", "__setusermatherr", "abort",
    "DisableThreadLibraryCalls", "VirtualProtect", "VirtualQuery", "TlsGetValue", "RtlAddFunctionTable",
    "RtlCaptureContext", "RtlLookupFunctionEntry", "RtlUnwindEx", "RtlVirtualUnwind",
    // Values.
    "__divdi3", "__udivdi3", "__udivmoddi4", "__divmoddi4", "__umoddi3", "GetCommandLineW",
    "GetCurrentProcessId", "GetTickCount", "QueryPerformanceCounter", "QueryPerformanceFrequency",
    "pthread_self", "CharLowerW", "GetClientRect", "GetKeyState", "MapVirtualKeyW", "__mb_cur_max", "_errno",
    "_iob", "__iob_func", "_fileno", "_get_osfhandle", "_isatty", "atoi", "fputc", "localeconv", "setlocale",
    "memchr", "memcmp", "memcpy", "memmove", "memset", "setvbuf", "strchr", "strerror", "strlen", "strncmp",
    "vfprintf", "wcslen", "_strdup", "_lock_file", "_unlock_file", "___lc_codepage_func",
    "___mb_cur_max_func", "GetConsoleOutputCP", "GetCurrentProcess", "GetCurrentThreadId", "GetFileType",
    "GetLastError", "FormatMessageW", "GetModuleHandleA", "GetModuleHandleW", "GetModuleHandleExW",
    "IsDBCSLeadByteEx", "MultiByteToWideChar", "WideCharToMultiByte", "OutputDebugStringW", "DebugBreak",
    "SetThreadErrorMode", "AdjustWindowRect", "SetWindowLongW", "SetWindowLongPtrW", "SetWindowPos",
    "SetWindowTextW", "ShowWindow", "UpdateWindow", "UnregisterClassW", "MessageBoxW", "SendMessageW",
    "DefWindowProcW", "DestroyWindow", "PostQuitMessage", "LoadLibraryA", "SetUnhandledExceptionFilter",
    "__doserrno", "ferror", "fputwc", "fwprintf", "towupper", "GetExitCodeProcess",
    // Waiting and ending.
    "CloseHandle", "FindClose", "FreeLibrary", "FreeLibraryAndExitThread", "AcquireSRWLockExclusive",
    "ReleaseSRWLockExclusive", "SleepConditionVariableSRW", "WakeConditionVariable",
    "WakeAllConditionVariable", "DeleteCriticalSection", "EnterCriticalSection", "InitializeCriticalSection",
    "LeaveCriticalSection", "QueueUserAPC", "ResetEvent", "SetEvent", "Sleep", "SleepEx",
    "WaitForMultipleObjects", "WaitForMultipleObjectsEx", "WaitForSingleObject", "WaitForSingleObjectEx",
    "DispatchMessageW", "GetMessageW", "TranslateMessage", "_lock", "_unlock", "nanosleep", "nanosleep64",
    "pthread_mutex_destroy", "pthread_mutex_init", "pthread_mutex_lock", "pthread_mutex_unlock",
    "timeBeginPeriod", "timeEndPeriod", "timeKillEvent", "pthread_mutex_trylock", "sched_yield",
    "CloseThreadpool", "CloseThreadpoolWork", "SetThreadpoolThreadMaximum", "SubmitThreadpoolWork",
    "WaitForThreadpoolWorkCallbacks", "DeleteProcThreadAttributeList", "ResumeThread", "TerminateJobObject",
    "TerminateProcess", "LocalFree", "PeekMessageW", "CloseThreadpoolWait", "SetThreadpoolWait",
    "WaitForThreadpoolWaitCallbacks",
    // Of a transfer that has begun: it is the pipe that fails.
    "CancelIoEx", "GetOverlappedResult"};

} // namespace

void SetLastFault(int error) {
    if (error == 0) return;
    // One of the two is what the caller asks.
    errno = error;
    SetLastError(static_cast<DWORD>(error));
}

const std::vector<THook>& GetHooks() {
    static const std::vector<THook> hooks = MakeHooks();
    return hooks;
}

bool CannotFail(const std::string& import) {
    // The standard library's own functions allocate through what is caught.
    const bool isStandard = import.rfind("_ZSt", 0) == 0 || import.rfind("_ZNSt", 0) == 0 ||
                            import.rfind("_ZNKSt", 0) == 0 || import.rfind("_ZT", 0) == 0;
    return isStandard || kUnfailing.count(import) != 0;
}

} // namespace vorlund::faults
