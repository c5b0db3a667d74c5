#include "api/isolation/Attempts.h"

#include <windows.h>

#include <tlhelp32.h>

namespace vorlund::test {
namespace {

class CAttempts {
public:
    void Add(const char* name, DWORD error) {
        if (!text_.empty()) text_ += ' ';
        text_ += std::string(name) + ' ' + std::to_string(error);
    }
    const std::string& GetText() const { return text_; }

private:
    std::string text_;
};

DWORD CreateAFile(const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) return GetLastError();
    CloseHandle(file);
    return 0;
}

std::wstring GetFolder() {
    wchar_t folder[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, folder);
    return folder;
}

DWORD CreateAFolder(const std::wstring& path) {
    if (!CreateDirectoryW(path.c_str(), nullptr)) return GetLastError();
    RemoveDirectoryW(path.c_str());
    return 0;
}

DWORD WriteTheRegistry() {
    HKEY key = nullptr;
    const LSTATUS status =
        RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\vorlund-isolation-attempt", 0, nullptr,
                        REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (status != ERROR_SUCCESS) return static_cast<DWORD>(status);
    RegCloseKey(key);
    RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\vorlund-isolation-attempt");
    return 0;
}

DWORD GetParent() {
    const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    DWORD parent = 0;
    for (BOOL more = Process32FirstW(processes, &entry); more; more = Process32NextW(processes, &entry))
        if (entry.th32ProcessID == GetCurrentProcessId()) parent = entry.th32ParentProcessID;
    CloseHandle(processes);
    return parent;
}

DWORD OpenTheApplication(DWORD access) {
    const HANDLE process = OpenProcess(access, FALSE, GetParent());
    if (!process) return GetLastError();
    CloseHandle(process);
    return 0;
}

/// Whether what this process starts ends with the application.
DWORD LookForTheJob() {
    BOOL isInJob = FALSE;
    if (!IsProcessInJob(GetCurrentProcess(), nullptr, &isInJob)) return GetLastError();
    return isInJob ? 0 : 1;
}

DWORD ReadAFile() {
    wchar_t path[MAX_PATH + 1] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return GetLastError();
    CloseHandle(file);
    return 0;
}

} // namespace

std::string AttemptWhatIsForbidden() {
    const std::wstring path = GetFolder() + L"vorlund-isolation-attempt";
    CAttempts attempts;
    attempts.Add("create", CreateAFile(path));
    attempts.Add("mkdir", CreateAFolder(path));
    attempts.Add("registry", WriteTheRegistry());
    attempts.Add("terminate", OpenTheApplication(PROCESS_TERMINATE));
    attempts.Add("inject", OpenTheApplication(PROCESS_VM_WRITE | PROCESS_VM_OPERATION));
    // Reading is possible, and the job is around it.
    attempts.Add("read", ReadAFile());
    attempts.Add("job", LookForTheJob());
    return attempts.GetText();
}

} // namespace vorlund::test
