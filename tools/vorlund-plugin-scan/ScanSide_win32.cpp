#include "ScanSide.h"

#include "vorlund/api/plugins/ScanProtocol.h"

#include <algorithm>
#include <cstdint>

#include <windows.h>

namespace {

LONG WINAPI OnFault(EXCEPTION_POINTERS* fault) {
    TerminateProcess(GetCurrentProcess(), fault->ExceptionRecord->ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

HANDLE Pipe(const std::string& channel) {
    return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(std::stoull(channel)));
}

/// For a limit of time that is over.
DWORD WINAPI EndLate(void*) {
    Sleep(2 * vorlund::pluginscan::kMaxScanSeconds * 1000);
    TerminateProcess(GetCurrentProcess(), 1);
    return 0;
}

} // namespace

void EndQuietly() {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    SetUnhandledExceptionFilter(&OnFault);
}

void LimitTime() {
    // Only for the case that the job which ends this process could not be made.
    if (const HANDLE thread = CreateThread(nullptr, 0, &EndLate, nullptr, 0, nullptr)) CloseHandle(thread);
}

void LimitMemory(unsigned int megabytes) {
    if (megabytes == 0) return;
    // A job inside the one that ends this process. It lasts as long as the process, and without a handle
    // nobody changes it.
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    if (!job) return;
    const std::uint64_t bytes = std::uint64_t{megabytes} << 20;
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_PROCESS_MEMORY;
    limits.ProcessMemoryLimit = static_cast<SIZE_T>(std::min<std::uint64_t>(bytes, SIZE_MAX));
    if (SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits)))
        AssignProcessToJobObject(job, GetCurrentProcess());
    CloseHandle(job);
}

bool EnterSandbox() {
    // The label "Low Mandatory Level": what has a higher one, as nearly everything, cannot be written to.
    SID low = {SID_REVISION, 1, SECURITY_MANDATORY_LABEL_AUTHORITY, {SECURITY_MANDATORY_LOW_RID}};
    TOKEN_MANDATORY_LABEL label = {{&low, SE_GROUP_INTEGRITY}};
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_DEFAULT | TOKEN_QUERY, &token)) return false;
    const BOOL isLow = SetTokenInformation(token, TokenIntegrityLevel, &label, sizeof(label));
    CloseHandle(token);
    return isLow != 0;
}

bool Send(const std::string& channel, const void* bytes, std::size_t size) {
    const auto* const from = static_cast<const char*>(bytes);
    for (std::size_t sent = 0; sent < size;) {
        DWORD count = 0;
        if (!WriteFile(Pipe(channel), from + sent, static_cast<DWORD>(size - sent), &count, nullptr) ||
            count == 0)
            return false;
        sent += count;
    }
    return true;
}

bool Receive(const std::string& channel, void* bytes, std::size_t size) {
    auto* const to = static_cast<char*>(bytes);
    for (std::size_t filled = 0; filled < size;) {
        DWORD count = 0;
        if (!ReadFile(Pipe(channel), to + filled, static_cast<DWORD>(size - filled), &count, nullptr) ||
            count == 0)
            return false;
        filled += count;
    }
    return true;
}

void EndNow() {
    TerminateProcess(GetCurrentProcess(), 0);
    // Not reached; the compiler does not know.
    ExitProcess(0);
}
