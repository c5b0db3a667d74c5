#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/system/TickSource.h"

#include <mmsystem.h>
#include <new>

namespace vorlund::waiting {

struct CTickSource::TState {
    HANDLE tick;
    MMRESULT timer;
};

CTickSource::CTickSource() noexcept : state_(new (std::nothrow) TState) {
    if (!state_) return;
    state_->tick = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    timeBeginPeriod(1);
    // The system wants a function here, and sets the event that it gets instead.
    const auto target = reinterpret_cast<LPTIMECALLBACK>(state_->tick);
    state_->timer = timeSetEvent(1, 1, target, 0, TIME_PERIODIC | TIME_CALLBACK_EVENT_SET);
}

CTickSource::~CTickSource() {
    if (!state_) return;
    timeKillEvent(state_->timer);
    timeEndPeriod(1);
    CloseHandle(state_->tick);
    delete state_;
}

bool CTickSource::WaitForTick(TEventHandle stop) noexcept {
    const HANDLE handles[] = {reinterpret_cast<HANDLE>(stop), state_ ? state_->tick : nullptr};
    if (WaitForMultipleObjects(state_ ? 2 : 1, handles, FALSE, INFINITE) != WAIT_OBJECT_0 + 1) return false;
    ResetEvent(state_->tick);
    return true;
}

} // namespace vorlund::waiting
