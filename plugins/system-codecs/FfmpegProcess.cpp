#include "FfmpegProcess.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// As FFmpeg's arguments name it.
constexpr int kFile = 3;
constexpr int kMaxSilence = 10'000;

/// What the process finds open, and signals as in a new one.
class CSetting {
public:
    CSetting(int file, int output) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
        // First, as the two may have the numbers of standard streams that this process lacks; and neither may
        // be where the other goes.
        const int high = fcntl(file, F_DUPFD_CLOEXEC, kFile + 2);
        const int highOutput = fcntl(output, F_DUPFD_CLOEXEC, kFile + 2);
        opened_[0] = high;
        opened_[1] = highOutput;
        posix_spawn_file_actions_adddup2(&actions_, high, kFile);
        posix_spawn_file_actions_adddup2(&actions_, highOutput, 1);
        posix_spawn_file_actions_addopen(&actions_, 0, "/dev/null", O_RDWR, 0);
        posix_spawn_file_actions_addopen(&actions_, 2, "/dev/null", O_RDWR, 0);
        posix_spawn_file_actions_addclosefrom_np(&actions_, kFile + 1);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    CSetting(const CSetting&) = delete;
    CSetting& operator=(const CSetting&) = delete;
    ~CSetting() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
        for (const int file : opened_)
            if (file >= 0) close(file);
    }

    bool Start(const std::string& program, char* const* arguments, pid_t& process) const {
        return opened_[0] >= 0 && opened_[1] >= 0 &&
               posix_spawn(&process, program.c_str(), &actions_, &attributes_, arguments, environ) == 0;
    }

private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
    int opened_[2] = {-1, -1};
};

} // namespace

std::string FindProgram(const std::string& name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): as posix_spawn itself, which takes the environment as it is.
    const char* const variable = std::getenv("PATH");
    std::string_view rest = variable ? variable : "/usr/local/bin:/usr/bin:/bin";
    while (!rest.empty()) {
        const std::size_t end = rest.find(':');
        const std::string_view folder = rest.substr(0, end);
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
        // An empty or relative one means the working folder, which may be anybody's.
        if (!folder.starts_with('/')) continue;
        std::string path = std::string(folder) + '/' + name;
        if (access(path.c_str(), X_OK) == 0) return path;
    }
    return {};
}

CFfmpegProcess::CFfmpegProcess(const std::string& program, std::vector<std::string> arguments, int file) {
    arguments.insert(arguments.begin(), program);
    std::vector<char*> list;
    list.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) list.push_back(argument.data());
    list.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    pipe_ = ends[0];
    pid_t process = -1;
    if (CSetting(file, ends[1]).Start(program, list.data(), process)) process_ = process;
    close(ends[1]);
}

CFfmpegProcess::~CFfmpegProcess() {
    if (pipe_ >= 0) close(pipe_);
    if (process_ <= 0 || Reap(WNOHANG)) return;
    kill(process_, SIGKILL);
    Reap(0);
}

bool CFfmpegProcess::Reap(int options) {
    pid_t taken;
    do {
        taken = waitpid(process_, &status_, options);
    } while (taken < 0 && errno == EINTR);
    if (taken == 0) return false;
    // Where the application takes its children's ends away itself, nothing is known of this one.
    if (taken < 0) status_ = 0;
    process_ = 0;
    return true;
}

ssize_t CFfmpegProcess::Read(void* buffer, size_t size) {
    for (;;) {
        pollfd pipe{pipe_, POLLIN, 0};
        const int ready = poll(&pipe, 1, kMaxSilence);
        if (ready == 0) return -1;
        const ssize_t count = ready > 0 ? read(pipe_, buffer, size) : -1;
        if (count >= 0) return count;
        if (errno != EINTR) return -1;
    }
}

bool CFfmpegProcess::HasSucceeded() {
    if (process_ > 0) Reap(0);
    return WIFEXITED(status_) && WEXITSTATUS(status_) == 0;
}
