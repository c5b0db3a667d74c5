#include "Interrupt.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t raised = 0;

void OnSignal(int) {
    raised = 1;
}

} // namespace

CInterrupt::CInterrupt() {
    raised = 0;
    std::signal(SIGINT, &OnSignal);
    std::signal(SIGTERM, &OnSignal);
}

CInterrupt::~CInterrupt() {
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

bool CInterrupt::IsRaised() const {
    return raised != 0;
}
