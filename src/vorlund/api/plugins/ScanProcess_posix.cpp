#include "vorlund/api/plugins/ScanProcess.h"

#include "vorlund/data/file/PathCodec_posix.h"

#include <cerrno>
#include <csignal>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vorlund {
namespace {

/// The descriptor of the pipe in the process of the scan, behind the standard streams.
constexpr int kChannel = 3;
constexpr const char* kChannelText = "3";
constexpr int kWaitMilliseconds = 20;
/// Between the end of the pipe and that of the process.
constexpr int kEndMilliseconds = 1;

/// What the process finds open.
class CActions {
public:
    explicit CActions(int writer) {
        posix_spawn_file_actions_init(&actions_);
        // First, because the pipe may have the number of a standard stream that this process lacks.
        Check(posix_spawn_file_actions_adddup2(&actions_, writer, kChannel));
        Check(posix_spawn_file_actions_addopen(&actions_, 0, "/dev/null", O_RDWR, 0));
        Check(posix_spawn_file_actions_adddup2(&actions_, 0, 1));
        Check(posix_spawn_file_actions_adddup2(&actions_, 0, 2));
        Check(posix_spawn_file_actions_addclosefrom_np(&actions_, kChannel + 1));
    }
    CActions(const CActions&) = delete;
    CActions& operator=(const CActions&) = delete;
    ~CActions() { posix_spawn_file_actions_destroy(&actions_); }

    const posix_spawn_file_actions_t* Get() const { return &actions_; }
    int GetError() const { return error_; }

private:
    void Check(int error) {
        if (!error_) error_ = error;
    }

    posix_spawn_file_actions_t actions_;
    int error_ = 0;
};

/// A group of its own, which can be killed as a whole, and signals as in a new process.
class CAttributes {
public:
    CAttributes() {
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setflags(&attributes_,
                                 POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    }
    CAttributes(const CAttributes&) = delete;
    CAttributes& operator=(const CAttributes&) = delete;
    ~CAttributes() { posix_spawnattr_destroy(&attributes_); }

    const posix_spawnattr_t* Get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_;
};

} // namespace

struct CScanProcess::TState {
    pid_t process = 0;
    /// -1 when the other end was closed.
    int reader = -1;
    std::int32_t error = 0;
    std::int32_t end = 0;
    /// Neither running nor waited for any more.
    bool isGone = true;

    ~TState() { CloseReader(); }

    void CloseReader() {
        if (reader >= 0) close(reader);
        reader = -1;
    }

    void Start(const char* helper, const char* file) {
        // Made first, as no exception may lose the ends of the pipe. The interface wants the texts of main,
        // which may be changed.
        std::string arguments[] = {helper, kChannelText, file};
        char* const list[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), nullptr};
        int ends[2];
        if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
            error = errno;
            return;
        }
        reader = ends[0];
        // The process writes as to any file.
        fcntl(ends[1], F_SETFL, 0);
        const CActions actions(ends[1]);
        const CAttributes attributes;
        error = actions.GetError();
        if (!error) error = posix_spawn(&process, helper, actions.Get(), attributes.Get(), list, environ);
        close(ends[1]);
        isGone = error != 0;
    }

    /// Takes the process away, and with it the others of its group. While it is not taken away, nobody else
    /// has its number.
    void Reap() {
        kill(-process, SIGKILL);
        int status = 0;
        pid_t taken;
        do {
            taken = waitpid(process, &status, 0);
        } while (taken < 0 && errno == EINTR);
        isGone = true;
        if (taken != process) return;
        end = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
    }
};

CScanProcess::CScanProcess(const wchar* helper, const wchar* file) : state_(std::make_unique<TState>()) {
    std::string helperBytes;
    std::string fileBytes;
    if (pathcodec::Encode(helper, helperBytes) && pathcodec::Encode(file, fileBytes))
        state_->Start(helperBytes.c_str(), fileBytes.c_str());
    else
        state_->error = EINVAL;
}

CScanProcess::~CScanProcess() {
    if (!HasEnded()) state_->Reap();
}

bool CScanProcess::IsStarted() const {
    return state_->process > 0 && !state_->error;
}

std::int32_t CScanProcess::GetError() const {
    return state_->error;
}

std::size_t CScanProcess::Read(void* buffer, std::size_t size) {
    if (state_->reader < 0) return 0;
    const ssize_t count = read(state_->reader, buffer, size);
    if (count > 0) return static_cast<std::size_t>(count);
    if (count == 0) state_->CloseReader();
    return 0;
}

void CScanProcess::Wait() {
    pollfd pipe{state_->reader, POLLIN, 0};
    poll(&pipe, 1, state_->reader < 0 ? kEndMilliseconds : kWaitMilliseconds);
}

bool CScanProcess::HasEnded() {
    if (state_->isGone) return true;
    siginfo_t info;
    info.si_pid = 0;
    // Only looked at: its group is ended first. Where the application takes its children's ends away itself,
    // there is none to look at.
    if (waitid(P_PID, static_cast<id_t>(state_->process), &info, WEXITED | WNOHANG | WNOWAIT) == 0) {
        if (info.si_pid == 0) return false;
        state_->Reap();
    } else if (errno == ECHILD) {
        state_->isGone = true;
    }
    return state_->isGone;
}

std::int32_t CScanProcess::GetEnd() const {
    return state_->end;
}

} // namespace vorlund
