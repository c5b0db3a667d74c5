// The threads that this library starts for timers and asynchronous waits. A port supplies everything declared
// here in a file WaitThread_<system>.cpp. Nothing here raises.
#pragma once

#include "vorlund/system/Waiting.h"

namespace vorlund::waiting {

/// A thread that this library started.
using TThreadHandle = struct TThread*;

/// Starts a thread that calls `run(argument)`, with the default stack; null when the system has no thread to
/// give. `Interrupt` gives back the handle of the first kind, `Join` that of the second.
///
/// The library stays loaded until every thread of the first kind has ended: either the system keeps it
/// loaded, or `AwaitInterrupted` waits for them.
TThreadHandle StartInterruptible(void (*run)(void* argument), void* argument) noexcept;
TThreadHandle StartJoinable(void (*run)(void* argument), void* argument) noexcept;

/// Ends the present and every later `WaitInterruptibly` of a thread. The thread may be about to end, or be
/// the calling one. While more than `kMaxThreadsEnding` threads have been interrupted and have not ended yet,
/// this waits, so that starting and stopping without a break does not take all threads that the system has.
/// It waits no longer than `kMaxPauseMilliseconds`, as the threads may be in callbacks.
void Interrupt(TThreadHandle thread) noexcept;

inline constexpr std::int32_t kMaxThreadsEnding = 32;
inline constexpr std::uint32_t kMaxPauseMilliseconds = 20;

/// Waits until the thread has ended.
void Join(TThreadHandle thread) noexcept;

/// A result of `WaitInterruptibly`.
inline constexpr std::uint32_t kInterrupted = 192;

/// Like `WaitForSeveral` without a limit, on a thread of `StartInterruptible`; `kInterrupted` when somebody
/// interrupted the thread, and perhaps at other times. With a count that `WaitForSeveral` refuses it fails,
/// whether interrupted or not.
std::uint32_t WaitInterruptibly(std::uint32_t count, const TEventHandle* events, bool isForAll) noexcept;

/// Sleeps on a thread of `StartInterruptible` until somebody interrupts it, and perhaps less long.
void SleepInterruptibly() noexcept;

/// Called around a callback of the application on a thread of `StartInterruptible`: a thread inside a
/// callback is not waited for at the end of the library, because nobody can know when it returns.
void EnterCallback() noexcept;
void LeaveCallback() noexcept;

/// At the end of the library, when all those threads have been interrupted: returns when none of them runs
/// code of the library any more, those in a callback excepted.
void AwaitInterrupted() noexcept;

/// At the end of the library: whether the system has already ended all other threads of the process, wherever
/// they were. They have then left locks held and never set what others wait for.
bool IsThreadLast() noexcept;

} // namespace vorlund::waiting
