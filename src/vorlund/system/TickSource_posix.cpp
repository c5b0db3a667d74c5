// The ticks are one millisecond apart, from the construction on. A wait ends at the next one, and ticks that
// have passed by then are skipped, so the ticks never drift away from the clock.
#include "vorlund/system/Thread_posix.h"
#include "vorlund/system/TickSource.h"
#include "vorlund/system/Waiting_posix.h"

#include <new>

namespace vorlund::waiting {

struct CTickSource::TState {
    std::int64_t next = MonotonicNanoseconds() + kTick;

    static constexpr std::int64_t kTick = 1000000;
};

CTickSource::CTickSource() noexcept : state_(new (std::nothrow) TState) {}

CTickSource::~CTickSource() {
    delete state_;
}

bool CTickSource::WaitForTick(TEventHandle stop) noexcept {
    if (!state_) {
        Wait(stop, kForever);
        return false;
    }
    if (WaitUntil(stop, state_->next) != kTimeout) return false;
    const std::int64_t late = MonotonicNanoseconds() - state_->next;
    state_->next += (late / TState::kTick + 1) * TState::kTick;
    return true;
}

} // namespace vorlund::waiting
