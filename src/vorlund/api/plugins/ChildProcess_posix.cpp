#include "vorlund/api/plugins/ChildProcess.h"

#include "vorlund/data/file/PathCodec_posix.h"

#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vorlund {
namespace {

/// The descriptor of the channel in the child, behind the standard streams.
constexpr int kChannel = 3;
constexpr const char* kChannelText = "3";
constexpr int kWaitMilliseconds = 20;
/// Between the end of the channel and that of the process.
constexpr int kEndMilliseconds = 1;

/// What the process finds open.
class CActions {
public:
    explicit CActions(int channel) {
        posix_spawn_file_actions_init(&actions_);
        // First, because the channel may have the number of a standard stream that this process lacks.
        Check(posix_spawn_file_actions_adddup2(&actions_, channel, kChannel));
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

struct CChildProcess::TState {
    pid_t process = 0;
    /// -1 when the other end was closed.
    int channel = -1;
    std::int32_t error = 0;
    std::int32_t end = 0;
    /// Neither running nor waited for any more.
    bool isGone = true;

    ~TState() { CloseChannel(); }

    void CloseChannel() {
        if (channel >= 0) close(channel);
        channel = -1;
    }

    /// `texts` begins with the program. The interface wants the texts of main, which may be changed.
    void Start(std::vector<std::string>& texts) {
        // Made first, as no exception may lose the ends of the channel.
        std::vector<char*> list;
        list.reserve(texts.size() + 1);
        for (std::string& text : texts) list.push_back(text.data());
        list.push_back(nullptr);
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
            error = errno;
            return;
        }
        channel = ends[0];
        // The child reads and writes as with any file.
        fcntl(channel, F_SETFL, O_NONBLOCK);
        const CActions actions(ends[1]);
        const CAttributes attributes;
        error = actions.GetError();
        if (!error)
            error = posix_spawn(&process, list[0], actions.Get(), attributes.Get(), list.data(), environ);
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

CChildProcess::CChildProcess(const wchar* program, const std::vector<wstring>& arguments)
    : state_(std::make_unique<TState>()) {
    std::vector<std::string> texts;
    bool isEncoded = pathcodec::Encode(program, texts.emplace_back());
    texts.emplace_back(kChannelText);
    for (const wstring& argument : arguments)
        isEncoded = pathcodec::Encode(argument.c_str(), texts.emplace_back()) && isEncoded;
    if (isEncoded)
        state_->Start(texts);
    else
        state_->error = EINVAL;
}

CChildProcess::~CChildProcess() {
    if (!HasEnded()) state_->Reap();
}

bool CChildProcess::IsStarted() const {
    return state_->process > 0 && !state_->error;
}

std::int32_t CChildProcess::GetError() const {
    return state_->error;
}

std::size_t CChildProcess::Read(void* buffer, std::size_t size) {
    if (state_->channel < 0) return 0;
    const ssize_t count = read(state_->channel, buffer, size);
    if (count > 0) return static_cast<std::size_t>(count);
    if (count == 0) state_->CloseChannel();
    return 0;
}

bool CChildProcess::Write(const void* bytes, std::size_t size, TClock::time_point deadline) {
    const auto* rest = static_cast<const char*>(bytes);
    while (size > 0) {
        if (state_->channel < 0) return false;
        // Without the signal that ends a process whose reader is gone.
        const ssize_t count = send(state_->channel, rest, size, MSG_NOSIGNAL);
        if (count >= 0) {
            rest += count;
            size -= static_cast<std::size_t>(count);
        } else if (errno != EAGAIN && errno != EINTR) {
            return false;
        } else if (TClock::now() >= deadline) {
            return false;
        } else {
            pollfd channel{state_->channel, POLLOUT, 0};
            poll(&channel, 1, kWaitMilliseconds);
        }
    }
    return true;
}

void CChildProcess::Wait() {
    pollfd channel{state_->channel, POLLIN, 0};
    poll(&channel, 1, state_->channel < 0 ? kEndMilliseconds : kWaitMilliseconds);
}

bool CChildProcess::HasEnded() {
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

std::int32_t CChildProcess::GetEnd() const {
    return state_->end;
}

} // namespace vorlund
