#include "support/ChildProcess.h"

#include "support/Emulated.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

extern char** environ;

namespace vorlund::test {
namespace {

using TClock = std::chrono::steady_clock;

void Check(bool isGood, const char* what) {
    if (!isGood) throw std::runtime_error(std::string("child process: ") + what);
}

/// A file handle that is closed at the end.
class CHandle {
public:
    explicit CHandle(int handle = -1) : handle_(handle) {}
    CHandle(CHandle&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}
    CHandle& operator=(CHandle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~CHandle() { Close(); }

    int Get() const { return handle_; }
    void Close() {
        if (handle_ >= 0) close(handle_);
        handle_ = -1;
    }

private:
    int handle_;
};

/// The reading end is kept, the writing end goes to the child.
struct TPipe {
    CHandle reader;
    CHandle writer;

    TPipe() {
        int ends[2];
        Check(pipe2(ends, O_CLOEXEC) == 0, "no pipe");
        reader = CHandle(ends[0]);
        writer = CHandle(ends[1]);
    }
};

/// File actions and attributes of a start, freed at the end.
class CStart {
public:
    CStart() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
        // A session of its own has no terminal, and gets the first one that is opened in it.
        posix_spawnattr_setflags(&attributes_,
                                 POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        sigaddset(&signals, SIGPIPE);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
    }
    CStart(const CStart&) = delete;
    CStart& operator=(const CStart&) = delete;
    ~CStart() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }

    void Open(int handle, const char* path, int flags) {
        posix_spawn_file_actions_addopen(&actions_, handle, path, flags, 0);
    }
    void Close(int handle) { posix_spawn_file_actions_addclose(&actions_, handle); }
    void Pass(const CHandle& from, int to) { posix_spawn_file_actions_adddup2(&actions_, from.Get(), to); }

    pid_t Run(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
        std::vector<std::string> texts{program.string()};
        texts.insert(texts.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        for (std::string& text : texts) pointers.push_back(text.data());
        pointers.push_back(nullptr);
        pid_t process = 0;
        Check(posix_spawn(&process, program.c_str(), &actions_, &attributes_, pointers.data(), environ) == 0,
              "not started");
        return process;
    }

private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

CHandle OpenPseudoTerminal() {
    CHandle master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    Check(master.Get() >= 0 && grantpt(master.Get()) == 0 && unlockpt(master.Get()) == 0, "no terminal");
    return master;
}

/// Handles that a child holds as long as it lives: of the pipe that tells its end, and of its terminal, which
/// would be gone for us whenever nobody had it open.
constexpr int kLifeHandle = 3;
constexpr int kTerminalHandle = 4;

} // namespace

struct CChildProcess::TState {
    struct TSource {
        CHandle handle;
        std::string text;
        bool isOpen = false;
    };

    pid_t process = 0;
    bool isRunning = false;
    bool hasTimedOut = false;
    TClock::time_point deadline;
    /// Standard output, standard error, the terminal, and a pipe that the child holds as long as it lives.
    std::array<TSource, 4> sources;
    std::string firstSettings;

    TSource& Terminal() { return sources[2]; }
    TSource& Life() { return sources[3]; }

    /// Reads what has come, or waits for something to come. Returns false at the deadline.
    bool Receive() {
        std::array<pollfd, 4> requests{};
        for (std::size_t i = 0; i < sources.size(); ++i)
            requests[i] = {sources[i].isOpen ? sources[i].handle.Get() : -1, POLLIN, 0};
        const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - TClock::now());
        if (rest.count() <= 0) return false;
        if (poll(requests.data(), requests.size(), static_cast<int>(rest.count())) < 0) return errno == EINTR;
        for (std::size_t i = 0; i < sources.size(); ++i)
            if (requests[i].revents) Read(sources[i]);
        return true;
    }

    static void Read(TSource& source) {
        char bytes[4096];
        const ssize_t count = read(source.handle.Get(), bytes, sizeof(bytes));
        if (count > 0) source.text.append(bytes, static_cast<std::size_t>(count));
        // A terminal that nobody holds any more fails instead of ending.
        else if (count == 0 || errno != EINTR)
            source.isOpen = false;
    }

    std::string DescribeTerminal() {
        termios settings{};
        Check(tcgetattr(Terminal().handle.Get(), &settings) == 0, "no settings");
        std::string text;
        for (const tcflag_t flags : {settings.c_iflag, settings.c_oflag, settings.c_cflag, settings.c_lflag})
            text += std::to_string(flags) + " ";
        for (const cc_t key : settings.c_cc) text += std::to_string(key) + " ";
        return text;
    }

    bool IsAnyOpen() const {
        return std::any_of(sources.begin(), sources.end(),
                           [](const TSource& source) { return source.isOpen; });
    }

    void Kill() { kill(-process, SIGKILL); }
};

bool TChildEnd::IsAbnormal() const {
    return signal != 0;
}

CChildProcess::CChildProcess(const std::string& program, const TChildOptions& options)
    : state_(std::make_unique<TState>()) {
    state_->deadline = TClock::now() + options.limit * (IsEmulated() ? kEmulatorTimeFactor : 1);
    TPipe output;
    TPipe errors;
    TPipe life;
    CStart start;
    start.Open(0, options.input.empty() ? "/dev/null" : options.input.c_str(), O_RDONLY);
    switch (options.output) {
    case TChildOutput::Captured:
        start.Pass(output.writer, 1);
        break;
    case TChildOutput::Refusing:
        start.Open(1, "/dev/full", O_WRONLY);
        break;
    case TChildOutput::Closed:
        start.Close(1);
        break;
    }
    start.Pass(errors.writer, 2);
    start.Pass(life.writer, kLifeHandle);
    if (options.hasTerminal) {
        state_->Terminal() = {OpenPseudoTerminal(), {}, true};
        char name[128];
        Check(ptsname_r(state_->Terminal().handle.Get(), name, sizeof(name)) == 0, "no terminal name");
        state_->firstSettings = state_->DescribeTerminal();
        start.Open(kTerminalHandle, name, O_RDWR);
        if (options.isErrorTerminal) start.Open(2, name, O_RDWR);
    }
    state_->process = start.Run(BesideProgram(program), options.arguments);
    state_->isRunning = true;
    state_->sources[0] = {std::move(output.reader), {}, true};
    state_->sources[1] = {std::move(errors.reader), {}, true};
    state_->sources[3] = {std::move(life.reader), {}, true};
}

CChildProcess::~CChildProcess() {
    if (!state_->isRunning) return;
    state_->Kill();
    waitpid(state_->process, nullptr, 0);
}

unsigned int CChildProcess::GetProcessId() const {
    return static_cast<unsigned int>(state_->process);
}

bool CChildProcess::WaitForTerminal(const std::string& text, std::size_t from) {
    while (state_->Terminal().text.find(text, from) == std::string::npos) {
        if (!state_->Life().isOpen || !state_->Receive()) return false;
    }
    return true;
}

void CChildProcess::Type(const std::string& keys) {
    Check(write(state_->Terminal().handle.Get(), keys.data(), keys.size()) ==
              static_cast<ssize_t>(keys.size()),
          "the terminal takes nothing");
}

std::string CChildProcess::GetTerminal() const {
    return state_->Terminal().text;
}

std::string CChildProcess::GetTerminalSettings() const {
    return state_->DescribeTerminal();
}

std::string CChildProcess::GetFirstTerminalSettings() const {
    return state_->firstSettings;
}

void CChildProcess::Kill() {
    state_->Kill();
}

TChildEnd CChildProcess::Wait() {
    while (!state_->hasTimedOut && state_->IsAnyOpen()) state_->hasTimedOut = !state_->Receive();
    if (state_->hasTimedOut) state_->Kill();
    int status = 0;
    while (waitpid(state_->process, &status, 0) < 0 && errno == EINTR) {
    }
    state_->isRunning = false;

    TChildEnd end;
    end.hasTimedOut = state_->hasTimedOut;
    if (WIFEXITED(status)) end.exitCode = static_cast<unsigned int>(WEXITSTATUS(status));
    if (WIFSIGNALED(status)) end.signal = WTERMSIG(status);
    end.output = state_->sources[0].text;
    end.errors = state_->sources[1].text;
    return end;
}

// Asked at the beginning, because an emulator that was given a name finds it by the folder of then.
const std::filesystem::path programFolder = std::filesystem::read_symlink("/proc/self/exe").parent_path();

std::filesystem::path BesideProgram(const std::string& name) {
    return programFolder / name;
}

} // namespace vorlund::test
