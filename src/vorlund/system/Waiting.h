// Waiting: what events, timers and asynchronous waits need of the operating system. A port supplies
// everything declared here in a file Event<System>.cpp, and the threads of WaitThread.h beside it; every rule
// about lists, numbers and failures is the callers'. Nothing here raises.
//
// Events are manual-reset. What is set, reset and waited for has the meaning of the Windows calls: setting an
// event releases every thread whose wait that satisfies, also when the event is reset at once; a wait for any
// of several reports the lowest one that is set; a wait for all is satisfied when all are set at one moment;
// a handle may be closed while others wait, who stay with what they wait for.
#pragma once

#include <cstdint>

namespace vorlund::waiting {

/// A reference to a platform event. Null is what is left when the system refuses one: it can be handed to
/// every function here, is never set, and no wait with it succeeds.
using TEventHandle = struct TEvent*;

/// A new event that is not set, or null.
TEventHandle Create() noexcept;
/// Another reference to the same event, or null.
TEventHandle Duplicate(TEventHandle event) noexcept;
void Close(TEventHandle event) noexcept;

void Set(TEventHandle event) noexcept;
void Reset(TEventHandle event) noexcept;
bool IsSet(TEventHandle event) noexcept;

/// Results of waits beside positions in a list.
inline constexpr std::uint32_t kTimeout = 258;
inline constexpr std::uint32_t kFailed = 0xFFFFFFFF;

/// As a time limit in milliseconds: none.
inline constexpr std::uint32_t kForever = 0xFFFFFFFF;

/// A wait for another number of events, or for none, fails at once.
inline constexpr std::uint32_t kMostEvents = 64;

/// Waits for one event: 0, `kTimeout` or `kFailed`.
std::uint32_t Wait(TEventHandle event, std::uint32_t milliseconds) noexcept;

/// Waits for any or for all: the position, 0 when all were waited for, `kTimeout` or `kFailed`. Reads no more
/// than `kMostEvents` handles.
std::uint32_t WaitForSeveral(std::uint32_t count, const TEventHandle* events, bool isForAll,
                             std::uint32_t milliseconds) noexcept;

} // namespace vorlund::waiting
