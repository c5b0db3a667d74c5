#include "api/isolation/Attempts.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vorlund::test {
namespace {

constexpr const char* kFile = "/tmp/vorlund-isolation-attempt";

class CAttempts {
public:
    void Add(const char* name, long result) {
        if (!text_.empty()) text_ += ' ';
        text_ += std::string(name) + ' ' + std::to_string(result < 0 ? errno : 0);
    }
    const std::string& GetText() const { return text_; }

private:
    std::string text_;
};

} // namespace

std::string AttemptWhatIsForbidden() {
    CAttempts attempts;
    attempts.Add("create", open(kFile, O_CREAT | O_WRONLY, 0600));
    attempts.Add("write", open("/proc/self/comm", O_WRONLY));
    attempts.Add("append", openat(AT_FDCWD, "/proc/self/comm", O_RDWR | O_APPEND));
    attempts.Add("temporary", open("/tmp", O_TMPFILE | O_RDWR, 0600));
    attempts.Add("truncate", truncate(kFile, 0));
    attempts.Add("rename", rename(kFile, "/tmp/vorlund-isolation-other"));
    attempts.Add("unlink", unlink(kFile));
    attempts.Add("mkdir", mkdir(kFile, 0700));
    attempts.Add("symlink", symlink("/", kFile));
    attempts.Add("chmod", chmod("/tmp", 0700));
    attempts.Add("socket", socket(AF_INET, SOCK_STREAM, 0));
    attempts.Add("local", socket(AF_UNIX, SOCK_STREAM, 0));
    attempts.Add("fork", fork());
    char* const arguments[] = {nullptr};
    attempts.Add("exec", execve("/bin/true", arguments, arguments));
    attempts.Add("kill", kill(getppid(), 0));
    attempts.Add("tgkill", syscall(SYS_tgkill, getppid(), getppid(), 0));
    rlimit limit;
    attempts.Add("prlimit", prlimit(getppid(), RLIMIT_NOFILE, nullptr, &limit));
    attempts.Add("setrlimit", getrlimit(RLIMIT_AS, &limit) == 0 ? setrlimit(RLIMIT_AS, &limit) : 0);
    // Reading is possible.
    attempts.Add("read", open("/proc/self/comm", O_RDONLY));
    attempts.Add("raise", syscall(SYS_tgkill, getpid(), gettid(), 0));
    return attempts.GetText();
}

} // namespace vorlund::test
