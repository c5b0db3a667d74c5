// A wake-up for one thread from where nothing may wait. A port supplies everything declared here in a file
// Signal_<system>.cpp. Nothing here raises.
#pragma once

#include <atomic>
#include <cstdint>

namespace vorlund {

/// Remembers that it was notified until its one waiter has seen it. `Notify` takes no lock and allocates
/// nothing, so it may come from threads of a sound system.
class CSignal {
public:
    CSignal() noexcept;
    CSignal(const CSignal&) = delete;
    CSignal& operator=(const CSignal&) = delete;
    ~CSignal(); // NOLINT(performance-trivially-destructible): not on every system

    void Notify() noexcept;

    /// Returns when notified since the last return, and at the latest when `waiting::NowNanoseconds` reaches
    /// `deadline`; perhaps earlier without a reason. One thread at a time.
    void WaitUntil(std::int64_t deadline) noexcept;

private:
    std::atomic<std::uint32_t> isSet_{0};
    [[maybe_unused]] void* event_ = nullptr; // not on every system
};

} // namespace vorlund
