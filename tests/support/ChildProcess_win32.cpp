#include "support/ChildProcess.h"

#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>

#include <windows.h>

namespace vorlund::test {
namespace {

using TClock = std::chrono::steady_clock;
/// For a debugged child to end once it is killed.
constexpr auto kEndLimit = std::chrono::minutes(2);

void Check(bool isGood, const char* what) {
    if (!isGood)
        throw std::runtime_error(std::string("child process: ") + what + ", error " +
                                 std::to_string(GetLastError()));
}

/// A kernel object that is given back at the end.
class CHandle {
public:
    explicit CHandle(HANDLE handle = nullptr) : handle_(handle) {}
    CHandle(CHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    CHandle& operator=(CHandle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~CHandle() { Close(); }

    HANDLE Get() const { return handle_; }
    void Close() {
        if (handle_) CloseHandle(handle_);
        handle_ = nullptr;
    }

private:
    HANDLE handle_;
};

/// A pipe that a thread of its own empties, as a full one would stop the child.
class CPipe {
public:
    CPipe() {
        SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
        HANDLE reader = nullptr;
        HANDLE writer = nullptr;
        Check(CreatePipe(&reader, &writer, &inherited, 0), "no pipe");
        reader_ = CHandle(reader);
        writer_ = CHandle(writer);
        SetHandleInformation(reader, HANDLE_FLAG_INHERIT, 0);
    }
    CPipe(const CPipe&) = delete;
    CPipe& operator=(const CPipe&) = delete;
    ~CPipe() { TakeText(); }

    HANDLE GetWriter() const { return writer_.Get(); }

    /// From now on the pipe takes no byte.
    void CloseReader() { reader_.Close(); }

    /// To be called when the child has its end.
    void Start() {
        writer_.Close();
        if (!reader_.Get()) return;
        thread_ = std::thread([this] {
            char bytes[4096];
            DWORD count = 0;
            while (::ReadFile(reader_.Get(), bytes, sizeof(bytes), &count, nullptr) && count > 0)
                text_.append(bytes, count);
        });
    }

    /// Everything, once the child has ended.
    std::string TakeText() {
        writer_.Close();
        if (thread_.joinable()) thread_.join();
        return std::move(text_);
    }

private:
    CHandle reader_;
    CHandle writer_;
    std::string text_;
    std::thread thread_;
};

CHandle OpenInput(const std::filesystem::path& path) {
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    const HANDLE handle = CreateFileW(path.empty() ? L"NUL" : path.c_str(), GENERIC_READ, FILE_SHARE_READ,
                                      &inherited, OPEN_EXISTING, 0, nullptr);
    Check(handle != INVALID_HANDLE_VALUE, "no input");
    return CHandle(handle);
}

} // namespace

struct CChildProcess::TState {
    CHandle process;
    DWORD processId = 0;
    bool isDebugged = false;
    bool isRunning = false;
    TClock::time_point deadline;
    CPipe output;
    CPipe errors;
    TChildEnd end;

    DWORD GetRest() const {
        const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - TClock::now());
        return rest.count() > 0 ? static_cast<DWORD>(rest.count()) : 0;
    }

    void Kill() {
        TerminateProcess(process.Get(), 1);
        if (isDebugged) {
            // The child ends only when its last events are taken.
            deadline = TClock::now() + kEndLimit;
            Debug();
        }
        WaitForSingleObject(process.Get(), INFINITE);
    }

    /// Answers the child's debug events. Returns false at the deadline.
    bool Debug() {
        bool hasStarted = false;
        for (;;) {
            DEBUG_EVENT event;
            if (!WaitForDebugEvent(&event, GetRest())) return false;
            DWORD answer = DBG_CONTINUE;
            if (event.dwDebugEventCode == OUTPUT_DEBUG_STRING_EVENT) {
                end.debuggerOutput.push_back(ReadText(event.u.DebugString));
            } else if (event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT) {
                if (event.u.Exception.ExceptionRecord.ExceptionCode != EXCEPTION_BREAKPOINT) {
                    answer = DBG_EXCEPTION_NOT_HANDLED;
                } else if (std::exchange(hasStarted, true)) {
                    // The first one is the system's, before the program begins.
                    end.hasHitBreakpoint = true;
                }
            }
            ContinueDebugEvent(event.dwProcessId, event.dwThreadId, answer);
            if (event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT) return true;
        }
    }

    wstring ReadText(const OUTPUT_DEBUG_STRING_INFO& info) const {
        // Both counts include the terminator.
        if (info.fUnicode) {
            wstring text(info.nDebugStringLength, L'\0');
            ReadProcessMemory(process.Get(), info.lpDebugStringData, text.data(), text.size() * sizeof(wchar),
                              nullptr);
            return text.c_str();
        }
        std::string bytes(info.nDebugStringLength, '\0');
        ReadProcessMemory(process.Get(), info.lpDebugStringData, bytes.data(), bytes.size(), nullptr);
        wstring text(bytes.size(), L'\0');
        MultiByteToWideChar(CP_ACP, 0, bytes.data(), static_cast<int>(bytes.size()), text.data(),
                            static_cast<int>(text.size()));
        return text.c_str();
    }
};

bool TChildEnd::IsAbnormal() const {
    // What abort() returns, and the codes of failures that the system ends a process with.
    return exitCode == 3 || exitCode >= 0x80000000u;
}

CChildProcess::CChildProcess(const std::string& program, const TChildOptions& options)
    : state_(std::make_unique<TState>()) {
    state_->deadline = TClock::now() + options.limit;
    const std::filesystem::path path = BesideProgram(program + ".exe");
    std::wstring command = L'"' + path.native() + L'"';
    for (const std::string& argument : options.arguments)
        command += L' ' + (argument.empty() ? L"\"\"" : std::wstring(argument.begin(), argument.end()));

    const CHandle input = OpenInput(options.input);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.Get();
    if (options.output != TChildOutput::Captured) state_->output.CloseReader();
    startup.hStdOutput =
        options.output == TChildOutput::Closed ? INVALID_HANDLE_VALUE : state_->output.GetWriter();
    startup.hStdError = state_->errors.GetWriter();
    PROCESS_INFORMATION process{};
    Check(CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, TRUE,
                         options.isDebugged ? DEBUG_ONLY_THIS_PROCESS : 0, nullptr, nullptr, &startup,
                         &process),
          "not started");
    CloseHandle(process.hThread);
    state_->process = CHandle(process.hProcess);
    state_->processId = process.dwProcessId;
    state_->isDebugged = options.isDebugged;
    state_->isRunning = true;
    state_->output.Start();
    state_->errors.Start();
}

CChildProcess::~CChildProcess() {
    if (state_->isRunning) state_->Kill();
}

unsigned int CChildProcess::GetProcessId() const {
    return state_->processId;
}

// A console is another thing than a terminal; no child is given one here.
bool CChildProcess::WaitForTerminal(const std::string&, std::size_t) {
    return false;
}
void CChildProcess::Type(const std::string&) {}
std::string CChildProcess::GetTerminal() const {
    return {};
}
std::string CChildProcess::GetTerminalSettings() const {
    return {};
}
std::string CChildProcess::GetFirstTerminalSettings() const {
    return {};
}

void CChildProcess::Kill() {
    TerminateProcess(state_->process.Get(), 1);
}

TChildEnd CChildProcess::Wait() {
    TState& state = *state_;
    const bool hasEnded = (!state.isDebugged || state.Debug()) &&
                          WaitForSingleObject(state.process.Get(), state.GetRest()) == WAIT_OBJECT_0;
    state.end.hasTimedOut = !hasEnded;
    if (!hasEnded) state.Kill();
    state.isRunning = false;
    DWORD exitCode = 0;
    GetExitCodeProcess(state.process.Get(), &exitCode);
    state.end.exitCode = exitCode;
    state.end.output = state.output.TakeText();
    state.end.errors = state.errors.TakeText();
    return state.end;
}

std::filesystem::path BesideProgram(const std::string& name) {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path() / name;
}

} // namespace vorlund::test
