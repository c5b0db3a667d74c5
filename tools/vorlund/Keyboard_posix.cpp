#include "Keyboard.h"
#include "Terminal.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <iterator>
#include <poll.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace {

/// So long after an escape, nothing belongs to it.
constexpr std::chrono::milliseconds kEscapeTime{50};

// What signal handlers see. The terminal is opened once and its number stays.
std::atomic<int> terminal = -1;
std::atomic<bool> isChanged = false;
termios before;
volatile std::sig_atomic_t isStopWanted = 0;
std::atomic<int> isContinued = 0;

bool IsInForeground() {
    return tcgetpgrp(terminal) == getpgrp();
}

void Apply() {
    termios changed = before;
    changed.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    changed.c_cc[VMIN] = 1;
    changed.c_cc[VTIME] = 0;
    tcsetattr(terminal, TCSANOW, &changed);
}

/// Nothing in the background: the terminal belongs to others then, and touching it would stop the process.
bool Change() {
    if (!IsInForeground()) return false;
    if (isChanged) {
        // Whoever had the terminal meanwhile has given it modes of his own.
        if (isContinued.exchange(0) != 0) Apply();
        return true;
    }
    if (tcgetattr(terminal, &before) != 0) return false;
    isChanged = true;
    Apply();
    return true;
}

void OnStop(int) {
    isStopWanted = 1;
}

void OnContinue(int) {
    isContinued = 1;
}

/// The default action follows.
void OnDeath(int signal) {
    RestoreTerminal();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

/// Signals, and what is done about them while keys are read.
constexpr struct {
    int signal;
    void (*handler)(int);
} kSignals[] = {
    {SIGTSTP, &OnStop}, {SIGCONT, &OnContinue}, {SIGQUIT, &OnDeath}, {SIGABRT, &OnDeath}, {SIGSEGV, &OnDeath},
    {SIGBUS, &OnDeath}, {SIGFPE, &OnDeath},     {SIGILL, &OnDeath},  {SIGPIPE, &OnDeath},
};
using THandler = void (*)(int);
THandler handlersBefore[std::size(kSignals)];

} // namespace

void RestoreTerminal() {
    if (isChanged.exchange(false) && IsInForeground()) tcsetattr(terminal, TCSANOW, &before);
}

CKeyboard::CKeyboard() {
    if (!IsErrorTerminal()) return;
    const int file = open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
    if (file < 0) return;
    terminal = file;
    isStopWanted = 0;
    isContinued = 0;
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
        handlersBefore[i] = std::signal(kSignals[i].signal, kSignals[i].handler);
        // Who ignores it, or watches for it, goes on with that.
        if (handlersBefore[i] != SIG_DFL) std::signal(kSignals[i].signal, handlersBefore[i]);
    }
    Change();
}

CKeyboard::~CKeyboard() {
    if (!IsThere()) return;
    RestoreTerminal();
    for (std::size_t i = 0; i < std::size(kSignals); ++i)
        if (handlersBefore[i] == SIG_DFL) std::signal(kSignals[i].signal, SIG_DFL);
    close(terminal.exchange(-1));
}

bool CKeyboard::IsThere() const {
    return terminal >= 0;
}

std::optional<TKey> CKeyboard::Read(std::chrono::milliseconds limit) {
    if (const auto key = TakeKey(bytes_, false)) return key;
    if (!IsThere() || !Change()) {
        std::this_thread::sleep_for(limit);
        return {};
    }
    const bool hasEscape = !bytes_.empty();
    pollfd request{terminal, POLLIN, 0};
    const int ready = poll(&request, 1, static_cast<int>((hasEscape ? kEscapeTime : limit).count()));
    if (ready == 0 && hasEscape) return TakeKey(bytes_, true);
    if (ready <= 0) return {};
    char read[64];
    const ssize_t count = ::read(terminal, read, sizeof read);
    if (count > 0) {
        bytes_.append(read, static_cast<std::size_t>(count));
        return TakeKey(bytes_, false);
    }
    // The terminal is gone; the signal of that ends the command.
    if (count == 0 || errno != EINTR) std::this_thread::sleep_for(limit);
    return {};
}

bool CKeyboard::IsStopWanted() const {
    return isStopWanted != 0;
}

void CKeyboard::Stop() {
    isStopWanted = 0;
    RestoreTerminal();
    std::signal(SIGTSTP, SIG_DFL);
    // Where nobody could continue it, the process goes on at once.
    raise(SIGTSTP);
    std::signal(SIGTSTP, &OnStop);
}
