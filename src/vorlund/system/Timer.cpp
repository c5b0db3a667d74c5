#include "vorlund/system/TimerPool.h"
#include "vorlund/system/WaitTime.h"

#include <vorlund/ClassObject.h>
#include <vorlund/Timer.h>

#include <new>

namespace vorlund {

struct CTimer::TData {
    TTimerEntry entry;
};

CTimer::CTimer(float period)
    : data_(new (CClassObject::operator new(sizeof(TData)))
                TData{{.timer = this, .period = static_cast<std::int32_t>(MillisecondsOf(period))}}) {}

CTimer::~CTimer() {
    Stop();
    data_->~TData();
    CClassObject::operator delete(data_);
}

void CTimer::Start() {
    timerPool.Add(data_->entry);
}

void CTimer::Stop() {
    timerPool.Remove(data_->entry);
}

} // namespace vorlund
