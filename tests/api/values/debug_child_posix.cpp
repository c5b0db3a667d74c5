#include "api/values/debug_child.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
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
/// How many calls of `write` still fail, as those of a stream that is full, or interrupted.
int refusedWrites = 0;

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
    if (refusedWrites > 0) {
        errno = --refusedWrites % 2 == 0 ? EAGAIN : EINTR;
        return -1;
    }
    return syscall(SYS_write, file, bytes, isWritingHalves ? (size + 1) / 2 : size);
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

/// From a process group that is not the terminal's, on a terminal that stops such writers.
int ReportFromBackground() {
    const int terminal = open("/dev/tty", O_RDWR | O_CLOEXEC);
    termios mode{};
    tcgetattr(terminal, &mode);
    mode.c_lflag |= TOSTOP;
    tcsetattr(terminal, TCSANOW, &mode);
    const pid_t process = fork();
    if (process == 0) {
        setpgid(0, 0);
        _exit(ReportBug("from the background"));
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
        _exit(ReportBug(text));
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
        refusedWrites = 4;
        CDebug::PrintMessage(type, VRL_L("late"));
    }
    return refusedWrites;
}

/// To a terminal that does.
int ReportLate() {
    refusedWrites = 4;
    return ReportBug("late");
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
    if (mode == "background") return ReportFromBackground();
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
