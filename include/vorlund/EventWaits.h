/// \file
/// Waits whose lists are checked by the compiler, that take times of `std::chrono`, and that return what
/// happened: no time limit raises here, or writes to the debugger output.
#pragma once

#include <vorlund/Event.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>

namespace vorlund {

/// How many events a wait takes. Since version 0.1.
inline constexpr std::size_t kMaxWaitedEvents = 64;

/// How a wait ended that was for no event. Since version 0.1.
inline constexpr std::uint32_t kWaitTimedOut = 0xFFFFFFFE;
inline constexpr std::uint32_t kWaitFailed = 0xFFFFFFFF;

/// Waits for any or all of `count` events.
///
/// \param events        `count` of them; they must live until this returns
/// \param count         1 to `kMaxWaitedEvents`
/// \param isForAll      whether all of them must be set at the same time
/// \param milliseconds  at most so long; below 0 without limit
/// \return the lowest position of an event that is set, 0 when all were waited for; `kWaitTimedOut`; and
///         `kWaitFailed` for no events, more than `kMaxWaitedEvents`, a null one, and those that the system
///         refuses
///
/// Any thread. Since version 0.1.
VRL_API std::uint32_t WaitForEvents(const CEvent* const* events, std::size_t count, bool isForAll,
                                    std::int64_t milliseconds) noexcept;

namespace eventwaits {

/// Whole milliseconds, rounded up: a wait never ends early.
template <class TRep, class TPeriod>
std::int64_t MillisecondsOf(const std::chrono::duration<TRep, TPeriod>& time) {
    using TLimit = std::chrono::duration<double, std::milli>;
    constexpr double kLongest = 0x1p62;
    if (!(TLimit(time).count() < kLongest)) return -1;
    const auto whole = std::chrono::ceil<std::chrono::milliseconds>(time).count();
    return whole < 0 ? 0 : static_cast<std::int64_t>(whole);
}

inline std::optional<std::size_t> PositionOf(std::uint32_t result) {
    if (result >= kWaitTimedOut) return {};
    return result;
}

} // namespace eventwaits

/// Waits until the event is set, at most for `limit`, which may be 0 or less to look only. Returns whether it
/// is. Since version 0.1.
template <class TRep, class TPeriod>
bool WaitFor(const CEvent& event, const std::chrono::duration<TRep, TPeriod>& limit) {
    const CEvent* const events[] = {&event};
    return WaitForEvents(events, 1, true, eventwaits::MillisecondsOf(limit)) == 0;
}

/// Waits until one of the events is set, and returns its position in the list, the lowest when several are;
/// empty for a list that no wait takes. Null ones are none. `WaitAny({&a, &b})`. Since version 0.1.
inline std::optional<std::size_t> WaitAny(std::span<const CEvent* const> events) {
    return eventwaits::PositionOf(WaitForEvents(events.data(), events.size(), false, -1));
}
inline std::optional<std::size_t> WaitAny(std::initializer_list<const CEvent*> events) {
    return WaitAny(std::span(events.begin(), events.size()));
}

/// The same for at most `limit`: empty when none was set. Since version 0.1.
template <class TRep, class TPeriod>
std::optional<std::size_t> WaitAny(std::span<const CEvent* const> events,
                                   const std::chrono::duration<TRep, TPeriod>& limit) {
    return eventwaits::PositionOf(
        WaitForEvents(events.data(), events.size(), false, eventwaits::MillisecondsOf(limit)));
}
template <class TRep, class TPeriod>
std::optional<std::size_t> WaitAny(std::initializer_list<const CEvent*> events,
                                   const std::chrono::duration<TRep, TPeriod>& limit) {
    return WaitAny(std::span(events.begin(), events.size()), limit);
}

/// Waits until all events are set at the same time. Returns false for a list that no wait takes. Since
/// version 0.1.
inline bool WaitAll(std::span<const CEvent* const> events) {
    return WaitForEvents(events.data(), events.size(), true, -1) == 0;
}
inline bool WaitAll(std::initializer_list<const CEvent*> events) {
    return WaitAll(std::span(events.begin(), events.size()));
}

/// The same for at most `limit`: false when they were not. Since version 0.1.
template <class TRep, class TPeriod>
bool WaitAll(std::span<const CEvent* const> events, const std::chrono::duration<TRep, TPeriod>& limit) {
    return WaitForEvents(events.data(), events.size(), true, eventwaits::MillisecondsOf(limit)) == 0;
}
template <class TRep, class TPeriod>
bool WaitAll(std::initializer_list<const CEvent*> events, const std::chrono::duration<TRep, TPeriod>& limit) {
    return WaitAll(std::span(events.begin(), events.size()), limit);
}

} // namespace vorlund
