#include "vorlund/system/Signal.h"

#include "vorlund/system/Thread_posix.h"

namespace vorlund {

CSignal::CSignal() noexcept = default;
CSignal::~CSignal() = default;

void CSignal::Notify() noexcept {
    const void* const address = &isSet_;
    if (isSet_.exchange(1, std::memory_order_acq_rel) == 0) UnparkOne(address);
}

void CSignal::WaitUntil(std::int64_t deadline) noexcept {
    if (isSet_.load(std::memory_order_relaxed) == 0) ParkWhileUntil(isSet_, 0, deadline);
    isSet_.exchange(0, std::memory_order_acq_rel);
}

} // namespace vorlund
