// Where messages go on a system without a debugger output and without boxes of its own: the system log, a
// notice on the process's terminal, and the two standard streams.
#include "vorlund/api/values/DebugOutput.h"

#include "vorlund/api/text/StackArena.h"
#include "vorlund/api/text/Utf8.h"
#include "vorlund/api/values/FramedNotice.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cwchar>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <syslog.h>
#include <termios.h>
#include <unistd.h>

namespace vorlund::debugoutput {
namespace {

/// A wait looks this often whether the process is still in the foreground.
constexpr int kPollMilliseconds = 250;

constexpr int kUsualColumns = 80;

/// The most bytes that a text takes in UTF-8.
std::size_t MaxUtf8Size(const wchar* text) {
    return std::char_traits<wchar>::length(text) * 3;
}

/// Keeps the job control from stopping this thread: what a background process may not do with the terminal
/// then fails instead.
class CJobControlBlock {
public:
    CJobControlBlock() {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGTTIN);
        sigaddset(&signals, SIGTTOU);
        pthread_sigmask(SIG_BLOCK, &signals, &former_);
    }
    CJobControlBlock(const CJobControlBlock&) = delete;
    CJobControlBlock& operator=(const CJobControlBlock&) = delete;
    ~CJobControlBlock() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }

private:
    sigset_t former_;
};

/// The process's controlling terminal, whatever its standard streams are. Its mode is not changed.
class CTerminal {
public:
    /// Opened anew, so that O_NONBLOCK applies to nobody else.
    CTerminal() : handle_(open("/dev/tty", O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {}
    CTerminal(const CTerminal&) = delete;
    CTerminal& operator=(const CTerminal&) = delete;
    ~CTerminal() {
        if (IsOpen()) close(handle_);
    }

    bool IsOpen() const { return handle_ >= 0; }
    bool IsInForeground() const { return tcgetpgrp(handle_) == getpgrp(); }

    int GetColumns() const {
        winsize size{};
        return ioctl(handle_, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualColumns;
    }

    /// When the terminal's output is stopped (Ctrl-S), only a foreground process waits for it.
    void Write(const std::pmr::string& text) {
        std::size_t done = 0;
        while (done < text.size()) {
            const ssize_t count = write(handle_, text.data() + done, text.size() - done);
            if (count > 0) {
                done += static_cast<std::size_t>(count);
            } else if (errno == EAGAIN) {
                if (!IsInForeground()) return;
                WaitOnce(POLLOUT);
            } else if (errno != EINTR) {
                return;
            }
        }
    }

    /// Returns at the end of a line (in every mode of the terminal), at the end of the input, when the
    /// terminal goes away and when the process leaves the foreground. Reads no byte after the line.
    void WaitForEnter() {
        while (IsInForeground()) {
            // The wait comes first, as there are modes in which a read without input returns 0, like the end.
            if (!WaitOnce(POLLIN)) continue;
            char unit = 0;
            const ssize_t count = read(handle_, &unit, 1);
            if (count == 0 || (count == 1 && (unit == '\n' || unit == '\r'))) return;
            if (count < 0 && errno != EINTR && errno != EAGAIN) return;
        }
    }

private:
    /// Returns true when the terminal is ready or gone.
    bool WaitOnce(short event) {
        pollfd request{handle_, event, 0};
        return poll(&request, 1, kPollMilliseconds) > 0;
    }

    int handle_;
};

/// Appends the text in the encoding of the locale. Returns false when that lacks one of its characters.
bool AppendInLocale(std::pmr::string& out, const wchar* text) {
    std::mbstate_t state{};
    char bytes[MB_LEN_MAX];
    while (const char32_t code = NextCodePoint(text)) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the state is our own.
        const std::size_t count = std::wcrtomb(bytes, static_cast<wchar_t>(code), &state);
        if (count == static_cast<std::size_t>(-1)) return false;
        out.append(bytes, count);
    }
    // The sequence that returns to the initial shift state, without the terminator.
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the state is our own.
    const std::size_t count = std::wcrtomb(bytes, L'\0', &state);
    if (count != static_cast<std::size_t>(-1)) out.append(bytes, count - 1);
    return true;
}

void WriteToFile(int file, const std::pmr::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t count = write(file, text.data() + done, text.size() - done);
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        } else if (count < 0 && errno == EAGAIN) {
            pollfd request{file, POLLOUT, 0};
            poll(&request, 1, kPollMilliseconds);
        } else if (count < 0 && errno != EINTR) {
            return;
        }
    }
}

/// A stream that has printed bytes gets bytes. One that prints wide characters would refuse bytes, and would
/// stop printing at a character that it cannot encode; one that has printed nothing would be bound to bytes
/// for good. For both the line goes to the file below the stream, after what the stream still holds.
void WriteLine(std::FILE* stream, const wchar* text) {
    CStackArena arena;
    const std::size_t maxSize = MaxUtf8Size(text) + 1;
    std::pmr::string line = ReserveString(arena, maxSize);
    if (!AppendInLocale(line, text)) {
        line.clear();
        AppendUtf8(line, text);
    }
    line += '\n';

    flockfile(stream);
    const int file = fileno(stream);
    if (fwide(stream, 0) < 0 || file < 0) {
        std::fwrite(line.data(), 1, line.size(), stream);
        std::fflush(stream);
    } else {
        std::fflush(stream);
        WriteToFile(file, line);
    }
    funlockfile(stream);
}

} // namespace

void WriteToDebugger(const wchar* text) {
    CStackArena arena;
    std::pmr::string line = ReserveString(arena, MaxUtf8Size(text));
    AppendUtf8(line, text);
    syslog(LOG_USER | LOG_DEBUG, "%s", line.c_str());
}

void ShowBox(const wchar* text) {
    const CJobControlBlock block;
    CTerminal terminal;
    if (!terminal.IsOpen()) return;
    const bool isWaiting = terminal.IsInForeground();
    CStackArena arena;
    std::pmr::string notice = ReserveString(arena, 4096);
    AppendFramedNotice(notice, VRL_L("Vorlund message"), text, terminal.GetColumns(), isWaiting);
    terminal.Write(notice);
    if (isWaiting) terminal.WaitForEnter();
}

void WriteToStandardOutput(const wchar* text) {
    WriteLine(stdout, text);
}

void WriteToStandardError(const wchar* text) {
    WriteLine(stderr, text);
}

void BreakIntoDebugger() {
    raise(SIGTRAP);
}

} // namespace vorlund::debugoutput
