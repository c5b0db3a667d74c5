// A system event, because sleeping on a word needs a mutex on older Windows (Thread_win32.cpp).
#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/system/Deadline.h"
#include "vorlund/system/Signal.h"

#include <algorithm>

namespace vorlund {
namespace {

constexpr std::int64_t kMillisecond = 1000000;
constexpr std::int64_t kLongestWait = 0x7FFFFFFF;
/// How often a waiter looks when the system has no event to give.
constexpr DWORD kPollMilliseconds = 1;

} // namespace

CSignal::CSignal() noexcept : event_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}

CSignal::~CSignal() {
    if (event_) CloseHandle(event_);
}

void CSignal::Notify() noexcept {
    if (isSet_.exchange(1, std::memory_order_acq_rel) == 0 && event_) SetEvent(event_);
}

void CSignal::WaitUntil(std::int64_t deadline) noexcept {
    if (isSet_.exchange(0, std::memory_order_acq_rel) != 0) return;
    const std::int64_t left = std::max<std::int64_t>(deadline - waiting::NowNanoseconds(), 0);
    const auto milliseconds =
        static_cast<DWORD>(std::min((left + kMillisecond - 1) / kMillisecond, kLongestWait));
    if (event_)
        WaitForSingleObject(event_, milliseconds);
    else
        Sleep(std::min(milliseconds, kPollMilliseconds));
    isSet_.exchange(0, std::memory_order_acq_rel);
}

} // namespace vorlund
