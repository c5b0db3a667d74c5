#include "EventPlaces.h"

#include <windows.h>

#include <mmsystem.h>

namespace vorlund::bench {

CPlace::CPlace(int processor) {
    SetThreadAffinityMask(GetCurrentThread(), DWORD_PTR{1} << (processor % 2));
}

CPlace::~CPlace() {
    SetThreadAffinityMask(GetCurrentThread(), ~DWORD_PTR{0});
}

double ProcessorSeconds() {
    FILETIME created, ended, kernel, user;
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
    const auto seconds = [](const FILETIME& time) {
        return (time.dwHighDateTime * 4294967296.0 + time.dwLowDateTime) * 1e-7;
    };
    return seconds(kernel) + seconds(user);
}

namespace {

void CALLBACK CountTick(UINT, UINT, DWORD_PTR ticks, DWORD_PTR, DWORD_PTR) {
    ++reinterpret_cast<CBareTicks*>(ticks)->count_;
}

} // namespace

CBareTicks::CBareTicks() {
    timeBeginPeriod(1);
    timer_ = timeSetEvent(1, 1, &CountTick, reinterpret_cast<DWORD_PTR>(this),
                          TIME_PERIODIC | TIME_CALLBACK_FUNCTION | TIME_KILL_SYNCHRONOUS);
}

CBareTicks::~CBareTicks() {
    timeKillEvent(timer_);
    timeEndPeriod(1);
}

} // namespace vorlund::bench
