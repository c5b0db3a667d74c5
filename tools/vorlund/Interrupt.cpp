#include "Interrupt.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t raised = 0;

void OnSignal(int) {
    raised = 1;
}

/// Of the system that has them: the terminal is gone, and what Windows says for Ctrl-Break and a closed
/// console.
constexpr int kSignals[] = {
    SIGINT,
    SIGTERM,
#ifdef SIGHUP
    SIGHUP,
#endif
#ifdef SIGBREAK
    SIGBREAK,
#endif
};

} // namespace

CInterrupt::CInterrupt() {
    raised = 0;
    for (const int signal : kSignals) {
        // Who was started to outlive it, does.
        if (std::signal(signal, &OnSignal) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
}

CInterrupt::~CInterrupt() {
    for (const int signal : kSignals) {
        if (std::signal(signal, SIG_DFL) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
}

bool CInterrupt::IsRaised() const {
    return raised != 0;
}
