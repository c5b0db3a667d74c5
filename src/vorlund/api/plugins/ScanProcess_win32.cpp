#include "vorlund/api/plugins/ScanProcess.h"

#include "vorlund/api/platform/WindowsLean.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vorlund {
namespace {

constexpr DWORD kWaitMilliseconds = 5;

/// A kernel object that is given back at the end.
class CHandle {
public:
    CHandle() = default;
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;
    ~CHandle() { Set(nullptr); }

    HANDLE Get() const { return handle_; }
    /// For a function that fills it.
    HANDLE* Fill() { return &handle_; }
    void Set(HANDLE handle) {
        if (handle_) CloseHandle(handle_);
        handle_ = handle == INVALID_HANDLE_VALUE ? nullptr : handle;
    }

private:
    HANDLE handle_ = nullptr;
};

/// The handles that a new process inherits, and no others, whatever else may be inherited.
class CInheritance {
public:
    explicit CInheritance(std::vector<HANDLE> handles) : handles_(std::move(handles)) {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        memory_.resize(size);
        if (!InitializeProcThreadAttributeList(Get(), 1, 0, &size)) return;
        isMade_ = true;
        isWhole_ = UpdateProcThreadAttribute(Get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(),
                                             handles_.size() * sizeof(HANDLE), nullptr, nullptr) != 0;
    }
    CInheritance(const CInheritance&) = delete;
    CInheritance& operator=(const CInheritance&) = delete;
    ~CInheritance() {
        if (isMade_) DeleteProcThreadAttributeList(Get());
    }

    LPPROC_THREAD_ATTRIBUTE_LIST Get() {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.data());
    }
    bool IsWhole() const { return isWhole_; }

private:
    std::vector<HANDLE> handles_;
    std::vector<char> memory_;
    bool isMade_ = false;
    bool isWhole_ = false;
};

/// A job that ends what is in it when its last handle is closed, so also when this process ends.
HANDLE CreateEndingJob() {
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (job) SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    return job;
}

} // namespace

struct CScanProcess::TState {
    CHandle process;
    CHandle job;
    CHandle reader;
    std::int32_t error = 0;

    bool Start(const wchar* helper, const wchar* file) {
        SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
        CHandle writer;
        if (!CreatePipe(reader.Fill(), writer.Fill(), nullptr, 0) ||
            !SetHandleInformation(writer.Get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT))
            return false;
        CHandle nothing;
        nothing.Set(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                &inherited, OPEN_EXISTING, 0, nullptr));
        if (!nothing.Get()) return false;
        CInheritance inheritance({writer.Get(), nothing.Get()});
        if (!inheritance.IsWhole()) return false;

        STARTUPINFOEXW startup = {};
        startup.StartupInfo.cb = sizeof(startup);
        startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        startup.StartupInfo.hStdInput = nothing.Get();
        startup.StartupInfo.hStdOutput = nothing.Get();
        startup.StartupInfo.hStdError = nothing.Get();
        startup.lpAttributeList = inheritance.Get();
        // Paths hold no quotation marks.
        const auto channel = std::to_wstring(reinterpret_cast<std::uintptr_t>(writer.Get()));
        wstring line = wstring(L"\"") + helper + L"\" " + channel + L" \"" + file + L"\"";
        PROCESS_INFORMATION started;
        // Suspended, so that it is in the job before it can start another.
        constexpr DWORD kFlags = CREATE_NO_WINDOW | CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT;
        if (!CreateProcessW(helper, line.data(), nullptr, nullptr, TRUE, kFlags, nullptr, nullptr,
                            &startup.StartupInfo, &started))
            return false;
        process.Set(started.hProcess);
        CHandle thread;
        thread.Set(started.hThread);
        // Systems before Windows 8 refuse when this process is in a job itself; the scan goes on without.
        job.Set(CreateEndingJob());
        if (job.Get()) AssignProcessToJobObject(job.Get(), process.Get());
        ResumeThread(thread.Get());
        return true;
    }
};

CScanProcess::CScanProcess(const wchar* helper, const wchar* file) : state_(std::make_unique<TState>()) {
    if (!state_->Start(helper, file)) state_->error = static_cast<std::int32_t>(GetLastError());
}

CScanProcess::~CScanProcess() {
    if (!state_->process.Get()) return;
    if (state_->job.Get()) TerminateJobObject(state_->job.Get(), 1);
    TerminateProcess(state_->process.Get(), 1);
    WaitForSingleObject(state_->process.Get(), INFINITE);
}

bool CScanProcess::IsStarted() const {
    return state_->process.Get() != nullptr;
}

std::int32_t CScanProcess::GetError() const {
    return state_->error;
}

std::size_t CScanProcess::Read(void* buffer, std::size_t size) {
    DWORD available = 0;
    if (!PeekNamedPipe(state_->reader.Get(), nullptr, 0, nullptr, &available, nullptr) || available == 0)
        return 0;
    DWORD count = 0;
    if (!ReadFile(state_->reader.Get(), buffer, static_cast<DWORD>(size), &count, nullptr)) return 0;
    return count;
}

void CScanProcess::Wait() {
    WaitForSingleObject(state_->process.Get(), kWaitMilliseconds);
}

bool CScanProcess::HasEnded() {
    return WaitForSingleObject(state_->process.Get(), 0) == WAIT_OBJECT_0;
}

std::int32_t CScanProcess::GetEnd() const {
    DWORD code = 0;
    GetExitCodeProcess(state_->process.Get(), &code);
    return static_cast<std::int32_t>(code);
}

} // namespace vorlund
