// Waiting: what events, timers and asynchronous waits need of the operating system. A port supplies
// everything declared here in a file Waiting_<system>.cpp, and the threads of WaitThread.h beside it; the
// rules about lists, numbers and failures are in Event.cpp and AsyncWaits.cpp. Nothing here raises. Any
// thread.
//
// Events are manual-reset, and setting, resetting and waiting mean what the Windows calls mean: setting an
// event releases every thread whose wait that satisfies, even when the event is reset at once; a wait for any
// of several reports the lowest one that is set; a wait for all is satisfied when all are set at one moment;
// a handle may be closed while threads wait, and their waits go on.
#pragma once

#include <cstdint>

namespace vorlund::waiting {

/// A reference to a platform event. Null when the system refuses one: every function here takes it, it is
/// never set, and no wait with it succeeds.
using TEventHandle = struct TEvent*;

/// A new event that is not set, or null.
TEventHandle Create() noexcept;
/// Another reference to the same event, or null.
TEventHandle Duplicate(TEventHandle event) noexcept;
/// Gives back a reference.
void Close(TEventHandle event) noexcept;

void Set(TEventHandle event) noexcept;
void Reset(TEventHandle event) noexcept;
bool IsSet(TEventHandle event) noexcept;

/// Results of waits that are not positions in a list.
inline constexpr std::uint32_t kTimeout = 258;
inline constexpr std::uint32_t kFailed = 0xFFFFFFFF;

/// The number of milliseconds that means no time limit.
inline constexpr std::uint32_t kForever = 0xFFFFFFFF;

/// A wait for more events, or for none, fails at once.
inline constexpr std::uint32_t kMaxEvents = 64;

/// Waits for one event: 0, `kTimeout` or `kFailed`.
std::uint32_t Wait(TEventHandle event, std::uint32_t milliseconds) noexcept;

/// Waits for any or for all: the position, 0 when all were waited for, `kTimeout` or `kFailed`. Reads no more
/// than `kMaxEvents` handles.
std::uint32_t WaitForSeveral(std::uint32_t count, const TEventHandle* events, bool isForAll,
                             std::uint32_t milliseconds) noexcept;

/// What watches of one owner share.
using TWatcherHandle = struct TWatcher*;

/// Null where none is needed, or when the system refuses one.
TWatcherHandle StartWatcher() noexcept;
/// When all its watches have ended.
void EndWatcher(TWatcherHandle watcher) noexcept;

/// Tells that an event is set, without a thread that waits for it. Owned by one thread at a time.
using TWatchHandle = struct TWatch*;

/// What is called then, on any thread: it must be short, and call nothing of this file. Returns the address
/// that `UnparkOne` is to be called for afterwards, or null.
using TSignalled = const void* (*)(void* argument);

/// A watch of `event`, which must be open until the watch ends; it is not armed. Null when the system refuses
/// one, which the functions below take.
TWatchHandle StartWatch(TWatcherHandle watcher, TEventHandle event, TSignalled signalled,
                        void* argument) noexcept;

/// Returns true when the event is seen to be set. Otherwise the watch is armed: it calls once when the event
/// is set, perhaps before this returns. Not for a watch that is armed and has not called.
bool Arm(TWatchHandle watch) noexcept;

/// When this returns, the watch is gone and its call is neither under way nor coming. Not from inside the
/// call.
void EndWatch(TWatchHandle watch) noexcept;

} // namespace vorlund::waiting
