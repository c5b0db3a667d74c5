// A tick's time is computed from its number, never from the tick before, so nothing adds up. A double holds
// nanoseconds exactly for a hundred days.
#include "vorlund/api/values/ClassMemory.h"
#include "vorlund/system/Deadline.h"
#include "vorlund/system/EventCell.h"

#include <vorlund/Exception.h>
#include <vorlund/PeriodicClock.h>

#include <cmath>
#include <utility>

namespace vorlund {
namespace {

constexpr TFailure kBadPeriod{VRL_L("vorlund::CPeriodicClock::CPeriodicClock"),
                              VRL_L("src/vorlund/system/PeriodicClock"), 24,
                              VRL_L("Period must be 1 microsecond to 1 day")};

constexpr double kMinPeriod = 0.000001;
constexpr double kMaxPeriod = 86400;

} // namespace

struct CPeriodicClock::TData : TClassMemory {
    explicit TData(double seconds) : period(seconds * 1e9) {}

    /// From the start to that tick, in nanoseconds.
    std::int64_t GetTime(std::uint64_t tick) const {
        return std::llround(static_cast<double>(tick) * period);
    }
    std::uint64_t CountTicks() const {
        const std::int64_t passed = waiting::NowNanoseconds() - start;
        auto ticks = static_cast<std::uint64_t>(static_cast<double>(passed) / period);
        // The quotient is rounded.
        while (GetTime(ticks + 1) <= passed) ++ticks;
        while (ticks > 0 && GetTime(ticks) > passed) --ticks;
        return ticks;
    }
    std::uint64_t Wait(waiting::TEventHandle stop) {
        if (waiting::WaitUntilDeadline(stop, start + GetTime(waited + 1))) return 0;
        const std::uint64_t before = std::exchange(waited, CountTicks());
        return waited - before;
    }

    const double period; ///< nanoseconds
    std::int64_t start = waiting::NowNanoseconds();
    std::uint64_t waited = 0;
    const waiting::CExactWaits exactWaits;
};

CPeriodicClock::CPeriodicClock(double period) {
    if (!(period >= kMinPeriod && period <= kMaxPeriod)) Raise<CInvalidParameterException>(kBadPeriod);
    data_ = new TData(period);
}

CPeriodicClock::~CPeriodicClock() {
    delete data_;
}

void CPeriodicClock::Restart() {
    data_->start = waiting::NowNanoseconds();
    data_->waited = 0;
}

std::uint64_t CPeriodicClock::Wait() {
    return data_->Wait(nullptr);
}

std::uint64_t CPeriodicClock::Wait(const CEvent& stop) {
    return data_->Wait(TEventAccess::HandleOf(&stop));
}

std::uint64_t CPeriodicClock::GetTicks() const {
    return data_->CountTicks();
}

std::uint64_t CPeriodicClock::GetWaitedTicks() const {
    return data_->waited;
}

} // namespace vorlund
