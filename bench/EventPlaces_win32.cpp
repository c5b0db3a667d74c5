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

const bool CBareTicks::kIsThere = true;

CBareTicks::CBareTicks() : tick_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    timeBeginPeriod(1);
    timer_ = timeSetEvent(1, 1, reinterpret_cast<LPTIMECALLBACK>(tick_), 0,
                          TIME_PERIODIC | TIME_CALLBACK_EVENT_SET);
    counter_ = std::thread([this] {
        while (!isOver_) {
            WaitForSingleObject(tick_, INFINITE);
            ++count_;
        }
    });
}

CBareTicks::~CBareTicks() {
    isOver_ = true;
    SetEvent(tick_);
    counter_.join();
    timeKillEvent(timer_);
    timeEndPeriod(1);
    CloseHandle(tick_);
}

} // namespace vorlund::bench
