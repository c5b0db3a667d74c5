#include "vorlund/api/values/ClassMemory.h"
#include "vorlund/system/TimerPool.h"
#include "vorlund/system/WaitTime.h"

#include <vorlund/Timer.h>

namespace vorlund {

struct CTimer::TData : TClassMemory {
    TData(CTimer& timer, float period)
        : entry{.timer = &timer, .period = static_cast<std::int32_t>(MillisecondsOf(period))} {}

    TTimerEntry entry;
};

CTimer::CTimer(float period) : data_(new TData(*this, period)) {}

CTimer::~CTimer() {
    Stop();
    delete data_;
}

void CTimer::Start() {
    timerPool.Add(data_->entry);
}

void CTimer::Stop() {
    timerPool.Remove(data_->entry);
}

} // namespace vorlund
