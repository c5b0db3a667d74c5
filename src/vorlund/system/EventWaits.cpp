#include "vorlund/system/EventCell.h"
#include "vorlund/system/Waiting.h"

#include <vorlund/EventWaits.h>

#include <algorithm>

namespace vorlund {
namespace {

static_assert(kMaxWaitedEvents == waiting::kMaxEvents);

/// The longest limit that the system is given at a time.
constexpr std::int64_t kLongestWait = waiting::kForever - 1;

} // namespace

std::uint32_t WaitForEvents(const CEvent* const* events, std::size_t count, bool isForAll,
                            std::int64_t milliseconds) noexcept {
    if (count == 0 || count > kMaxWaitedEvents) return kWaitFailed;
    waiting::TEventHandle handles[kMaxWaitedEvents];
    for (std::size_t index = 0; index < count; ++index)
        handles[index] = TEventAccess::HandleOf(events[index]);
    std::uint32_t result = waiting::kTimeout;
    do {
        const std::int64_t part = std::min(milliseconds, kLongestWait);
        result = waiting::WaitForSeveral(static_cast<std::uint32_t>(count), handles, isForAll,
                                         part < 0 ? waiting::kForever : static_cast<std::uint32_t>(part));
        milliseconds -= part;
    } while (result == waiting::kTimeout && milliseconds > 0);
    return result == waiting::kTimeout ? kWaitTimedOut : result;
}

} // namespace vorlund
