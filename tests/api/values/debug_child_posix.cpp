#include "api/values/debug_child.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

/// How many calls of `poll` still time out, at once and whatever has come.
int missedPolls = 0;
/// Whether `write` writes half of what it is given, as a terminal may.
bool isWritingHalves = false;

/// How the next calls of a function fail, the last one first: by an error number, or without one and without
/// a byte.
struct TFailingCalls {
    int errors[4] = {};
    int count = 0;

    ssize_t Fail() {
        const int error = errors[--count];
        if (error == 0) return 0;
        errno = error;
        return -1;
    }
};
TFailingCalls failingWrites;
TFailingCalls failingReads;

} // namespace

// The program's own functions come before the C library's, also for the calls of the library under test: the
// system log is what is on this program's standard output.
extern "C" __attribute__((visibility("default"))) void syslog(int priority, const char* format, ...) {
    char text[8192];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    std::printf("log %d: %s\n", priority, text);
}

extern "C" __attribute__((visibility("default"))) int poll(pollfd* requests, nfds_t count, int milliseconds) {
    if (missedPolls > 0) {
        --missedPolls;
        return 0;
    }
    timespec limit{milliseconds / 1000, milliseconds % 1000 * 1000000L};
    return ppoll(requests, count, milliseconds < 0 ? nullptr : &limit, nullptr);
}

extern "C" __attribute__((visibility("default"))) ssize_t write(int file, const void* bytes,
                                                                std::size_t size) {
    if (failingWrites.count > 0) return failingWrites.Fail();
    return syscall(SYS_write, file, bytes, isWritingHalves ? (size + 1) / 2 : size);
}

extern "C" __attribute__((visibility("default"))) ssize_t read(int file, void* bytes, std::size_t size) {
    if (failingReads.count > 0) return failingReads.Fail();
    return syscall(SYS_read, file, bytes, size);
}

namespace vorlund::test {
namespace {

/// Builds a bug exception, whose box is the point, and tells that it was built.
int ReportBug(const char* what) {
    const CBugException bug(kChildFailure.method, kChildFailure.file, kChildFailure.line,
                            kChildFailure.reason);
    std::printf("%s\n", what);
    std::fflush(stdout);
    return 0;
}

int WaitForChild(pid_t process) {
    int status = 0;
    if (waitpid(process, &status, WUNTRACED) != process) return 2;
    if (WIFSTOPPED(status)) {
        kill(process, SIGKILL);
        return 3;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 4;
}

/// From a process group that is not the terminal's, on a terminal that stops such writers, or that is full.
int ReportFromBackground(bool isFull) {
    const int terminal = open("/dev/tty", O_RDWR | O_CLOEXEC);
    termios mode{};
    tcgetattr(terminal, &mode);
    mode.c_lflag |= TOSTOP;
    tcsetattr(terminal, TCSANOW, &mode);
    const pid_t process = fork();
    if (process == 0) {
        setpgid(0, 0);
        if (isFull) failingWrites = {{EAGAIN}, 1};
        std::exit(ReportBug("from the background"));
    }
    return WaitForChild(process);
}

/// A child process whose group has the terminal, and SIGUSR1, by which somebody tells this program to take it
/// back.
class CForeground {
public:
    /// The child reports `text` and ends.
    explicit CForeground(const char* text) {
        sigemptyset(&signals_);
        sigaddset(&signals_, SIGUSR1);
        sigaddset(&signals_, SIGTTOU);
        sigprocmask(SIG_BLOCK, &signals_, nullptr);
        sigdelset(&signals_, SIGTTOU);
        terminal_ = open("/dev/tty", O_RDWR | O_CLOEXEC);
        process_ = fork();
        if (process_ != 0) return;
        setpgid(0, 0);
        tcsetpgrp(terminal_, getpid());
        std::exit(ReportBug(text));
    }

    void AwaitSignal() {
        int received = 0;
        sigwait(&signals_, &received);
    }
    void TakeTerminal() const { tcsetpgrp(terminal_, getpid()); }
    int GetTerminal() const { return terminal_; }
    pid_t GetProcess() const { return process_; }

private:
    sigset_t signals_;
    int terminal_ = -1;
    pid_t process_ = -1;
};

/// From a process group that is the terminal's until this program is told to take it back.
int ReportUntilBackground() {
    CForeground child("until the background");
    child.AwaitSignal();
    child.TakeTerminal();
    return WaitForChild(child.GetProcess());
}

/// From a process group that loses the terminal while it waits for input, before that comes. The first signal
/// takes the terminal, which this program tells there; a second one lets the waiting process go on.
int ReportInputInBackground() {
    CForeground child("input in the background");
    child.AwaitSignal();
    int status = 0;
    kill(child.GetProcess(), SIGSTOP);
    if (waitpid(child.GetProcess(), &status, WUNTRACED) != child.GetProcess()) return 5;
    child.TakeTerminal();
    dprintf(child.GetTerminal(), "taken\n");
    child.AwaitSignal();
    kill(child.GetProcess(), SIGCONT);
    return WaitForChild(child.GetProcess());
}

/// To streams that take the bytes only after some calls.
int PrintLate() {
    for (const TDebugMessageType type : {DEBUG_MESSAGE_STDOUT, DEBUG_MESSAGE_STDERR}) {
        failingWrites = {{0, EAGAIN, EINTR, EAGAIN}, 4};
        CDebug::PrintMessage(type, VRL_L("late"));
    }
    return failingWrites.count;
}

/// To a terminal that does.
int ReportLate() {
    failingWrites = {{EAGAIN, EINTR, EAGAIN}, 3};
    return ReportBug("late");
}

/// To one that is taken away meanwhile.
int ReportWithoutOutput() {
    failingWrites = {{EIO}, 1};
    return ReportBug("no output");
}

/// To one that is taken away while the process waits for input.
int ReportWithoutInput() {
    failingReads = {{EIO, EAGAIN, EINTR}, 3};
    return ReportBug("no input") + failingReads.count;
}

/// While a timer interrupts every call.
int ReportInterrupted() {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);
    const itimerval often{{0, 2000}, {0, 2000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    return ReportBug("interrupted");
}

/// While the terminal takes only a part of each text.
int ReportInHalves() {
    isWritingHalves = true;
    return ReportBug("halves");
}

/// Ends without the C library, which would write what its streams still hold.
int PrintBeforeAbruptEnd() {
    std::printf("before ");
    CDebug::PrintMessage(DEBUG_MESSAGE_STDOUT, VRL_L("%s"), kMixedText);
    _exit(0);
}

/// On a terminal whose Enter key gives a carriage return, and which reads nothing rather than wait. The first
/// waits end without input.
int ReportInRawMode() {
    const int terminal = open("/dev/tty", O_RDWR | O_CLOEXEC);
    termios mode{};
    tcgetattr(terminal, &mode);
    cfmakeraw(&mode);
    mode.c_cc[VMIN] = 0;
    mode.c_cc[VTIME] = 0;
    tcsetattr(terminal, TCSANOW, &mode);
    missedPolls = 3;
    const int result = ReportBug("raw");
    // What was typed behind Enter is still there.
    char rest[8] = {};
    const ssize_t count = read(terminal, rest, sizeof(rest) - 1);
    std::printf("left: %s\n", count > 0 ? rest : "nothing");
    return result;
}

/// All 1023 units of the longest message.
int LogLongText() {
    const wstring text(2000, VRL_L('\u65E5'));
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("%s"), text.c_str());
    return 0;
}

/// Control characters, which could command the terminal.
int ShowControls() {
    CDebug::PrintMessage(DEBUG_MESSAGE_BOX, VRL_L("<\x1B[2J>\ntwo rows"));
    return 0;
}

} // namespace

int RunSystemMode(const std::string& mode) {
    if (mode == "background") return ReportFromBackground(false);
    if (mode == "busy-background") return ReportFromBackground(true);
    if (mode == "no-output") return ReportWithoutOutput();
    if (mode == "no-input") return ReportWithoutInput();
    if (mode == "until-background") return ReportUntilBackground();
    if (mode == "background-input") return ReportInputInBackground();
    if (mode == "halves") return ReportInHalves();
    if (mode == "busy") return PrintLate();
    if (mode == "busy-terminal") return ReportLate();
    if (mode == "abrupt-end") return PrintBeforeAbruptEnd();
    if (mode == "interrupted") return ReportInterrupted();
    if (mode == "raw") return ReportInRawMode();
    if (mode == "long-log") return LogLongText();
    if (mode == "controls") return ShowControls();
    return kUnknownMode;
}

} // namespace vorlund::test
