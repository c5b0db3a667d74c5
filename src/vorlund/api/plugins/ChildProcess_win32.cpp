#include "vorlund/api/plugins/ChildProcess.h"

#include "vorlund/api/platform/WindowsLean.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace vorlund {
namespace {

constexpr DWORD kWaitMilliseconds = 20;
/// For what a process that has ended has written: it comes, or the end of the channel does.
constexpr DWORD kMaxEndMilliseconds = 1000;
/// As much as the child may have written before it is read.
constexpr DWORD kChannelSize = 128 * 1024;

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

/// A channel of two ends. The own one is asynchronous, so that nothing here waits for the child for ever; the
/// other one can be inherited.
bool CreateChannel(HANDLE* own, HANDLE* other) {
    static std::atomic<unsigned int> count;
    // A name that is taken already is refused, and so is a second one who opens it.
    const wstring name = L"\\\\.\\pipe\\vorlund-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                         std::to_wstring(++count) + L"-" + std::to_wstring(GetTickCount());
    constexpr DWORD kMode = PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE;
    const HANDLE pipe =
        CreateNamedPipeW(name.c_str(), kMode, PIPE_TYPE_BYTE, 1, kChannelSize, kChannelSize, 0, nullptr);
    if (pipe == INVALID_HANDLE_VALUE) return false;
    *own = pipe;
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    const HANDLE end =
        CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, &inherited, OPEN_EXISTING, 0, nullptr);
    if (end == INVALID_HANDLE_VALUE) return false;
    *other = end;
    return true;
}

/// An operation of the own end that may be under way. Its memory stays where it is until it has ended.
class COperation {
public:
    COperation() { event_.Set(CreateEventW(nullptr, TRUE, FALSE, nullptr)); }
    COperation(const COperation&) = delete;
    COperation& operator=(const COperation&) = delete;

    bool IsMade() const { return event_.Get() != nullptr; }
    bool IsUnderWay() const { return isUnderWay_; }
    HANDLE GetEvent() const { return event_.Get(); }

    /// For the system's function; `Begin` takes its answer.
    OVERLAPPED* Prepare() {
        overlapped_ = {};
        overlapped_.hEvent = event_.Get();
        return &overlapped_;
    }
    void Begin(BOOL answer) { isUnderWay_ = answer || GetLastError() == ERROR_IO_PENDING; }

    /// The bytes that it has moved; nothing while it goes on, or when it has failed.
    DWORD End(HANDLE pipe) {
        DWORD count = 0;
        if (GetOverlappedResult(pipe, &overlapped_, &count, FALSE)) {
            isUnderWay_ = false;
            return count;
        }
        isUnderWay_ = GetLastError() == ERROR_IO_INCOMPLETE;
        return 0;
    }

    /// Gives it up.
    void Cancel(HANDLE pipe) {
        if (!isUnderWay_) return;
        CancelIoEx(pipe, &overlapped_);
        DWORD count = 0;
        GetOverlappedResult(pipe, &overlapped_, &count, TRUE);
        isUnderWay_ = false;
    }

private:
    CHandle event_;
    OVERLAPPED overlapped_ = {};
    bool isUnderWay_ = false;
};

} // namespace

struct CChildProcess::TState {
    CHandle process;
    CHandle job;
    CHandle channel;
    COperation reading;
    COperation writing;
    std::vector<char> bytes = std::vector<char>(kChannelSize);
    DWORD begin = 0;
    DWORD end = 0;
    std::int32_t error = 0;

    ~TState() {
        reading.Cancel(channel.Get());
        writing.Cancel(channel.Get());
    }

    bool Start(const wchar* program, const std::vector<wstring>& arguments) {
        CHandle other;
        if (!reading.IsMade() || !writing.IsMade() || !CreateChannel(channel.Fill(), other.Fill()))
            return false;
        SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
        CHandle nothing;
        nothing.Set(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                &inherited, OPEN_EXISTING, 0, nullptr));
        if (!nothing.Get()) return false;
        CInheritance inheritance({other.Get(), nothing.Get()});
        if (!inheritance.IsWhole()) return false;

        STARTUPINFOEXW startup = {};
        startup.StartupInfo.cb = sizeof(startup);
        startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        startup.StartupInfo.hStdInput = nothing.Get();
        startup.StartupInfo.hStdOutput = nothing.Get();
        startup.StartupInfo.hStdError = nothing.Get();
        startup.lpAttributeList = inheritance.Get();
        wstring line = wstring(L"\"") + program + L"\" ";
        line += std::to_wstring(reinterpret_cast<std::uintptr_t>(other.Get()));
        for (const wstring& argument : arguments) line += L" \"" + argument + L"\"";
        PROCESS_INFORMATION started;
        // Suspended, so that it is in the job before it can start another.
        constexpr DWORD kFlags = CREATE_NO_WINDOW | CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT;
        if (!CreateProcessW(program, line.data(), nullptr, nullptr, TRUE, kFlags, nullptr, nullptr,
                            &startup.StartupInfo, &started))
            return false;
        process.Set(started.hProcess);
        CHandle thread;
        thread.Set(started.hThread);
        // Systems before Windows 8 refuse when this process is in a job itself; then it goes on without.
        job.Set(CreateEndingJob());
        if (job.Get()) AssignProcessToJobObject(job.Get(), process.Get());
        ResumeThread(thread.Get());
        return true;
    }

    /// Takes what has come, if anything.
    void Take() {
        if (!reading.IsUnderWay())
            reading.Begin(ReadFile(channel.Get(), bytes.data(), kChannelSize, nullptr, reading.Prepare()));
        if (!reading.IsUnderWay()) return;
        // What is there already comes at once, or very soon, but for a busy machine.
        const bool hasEnded = WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0;
        WaitForSingleObject(reading.GetEvent(), hasEnded ? kMaxEndMilliseconds : 0);
        begin = 0;
        end = reading.End(channel.Get());
    }
};

CChildProcess::CChildProcess(const wchar* program, const std::vector<wstring>& arguments)
    : state_(std::make_unique<TState>()) {
    if (!state_->Start(program, arguments)) state_->error = static_cast<std::int32_t>(GetLastError());
}

CChildProcess::~CChildProcess() {
    if (!state_->process.Get()) return;
    if (state_->job.Get()) TerminateJobObject(state_->job.Get(), 1);
    TerminateProcess(state_->process.Get(), 1);
    WaitForSingleObject(state_->process.Get(), INFINITE);
}

bool CChildProcess::IsStarted() const {
    return state_->process.Get() != nullptr;
}

std::int32_t CChildProcess::GetError() const {
    return state_->error;
}

std::size_t CChildProcess::Read(void* buffer, std::size_t size) {
    if (state_->begin == state_->end) state_->Take();
    const std::size_t count = std::min<std::size_t>(size, state_->end - state_->begin);
    std::memcpy(buffer, state_->bytes.data() + state_->begin, count);
    state_->begin += static_cast<DWORD>(count);
    return count;
}

bool CChildProcess::Write(const void* bytes, std::size_t size, TClock::time_point deadline) {
    const HANDLE channel = state_->channel.Get();
    COperation& writing = state_->writing;
    const auto* rest = static_cast<const char*>(bytes);
    while (size > 0) {
        writing.Begin(WriteFile(channel, rest, static_cast<DWORD>(size), nullptr, writing.Prepare()));
        // Asked first: who has been written to may have answered and ended already.
        DWORD count = writing.IsUnderWay() ? writing.End(channel) : 0;
        while (writing.IsUnderWay()) {
            if (TClock::now() >= deadline || HasEnded()) {
                writing.Cancel(channel);
                return false;
            }
            WaitForSingleObject(writing.GetEvent(), kWaitMilliseconds);
            count = writing.End(channel);
        }
        if (count == 0) return false;
        rest += count;
        size -= count;
    }
    return true;
}

void CChildProcess::Wait() {
    if (state_->begin != state_->end) return;
    const HANDLE both[] = {state_->process.Get(), state_->reading.GetEvent()};
    WaitForMultipleObjects(state_->reading.IsUnderWay() ? 2 : 1, both, FALSE, kWaitMilliseconds);
}

bool CChildProcess::HasEnded() {
    return WaitForSingleObject(state_->process.Get(), 0) == WAIT_OBJECT_0;
}

std::int32_t CChildProcess::GetEnd() const {
    DWORD code = 0;
    GetExitCodeProcess(state_->process.Get(), &code);
    return static_cast<std::int32_t>(code);
}

} // namespace vorlund
