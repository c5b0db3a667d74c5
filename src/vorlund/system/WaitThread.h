// The threads that this library starts. A port supplies everything declared here in a file
// WaitThread<System>.cpp. Nothing here raises.
#pragma once

#include "vorlund/system/Waiting.h"

namespace vorlund::waiting {

/// A thread that this library started.
using TThreadHandle = struct TThread*;

/// Starts a thread that calls `run(argument)`, with the default stack; null when there is none to be had. The
/// handle is given back by `Interrupt` or `Join`.
///
/// The code of the library stays where it is until a thread that will be interrupted has ended: either the
/// system keeps the library loaded, or `AwaitInterrupted` knows.
TThreadHandle StartInterruptible(void (*run)(void* argument), void* argument) noexcept;
TThreadHandle StartJoinable(void (*run)(void* argument), void* argument) noexcept;

/// Ends the present and every later `WaitInterruptibly` of a thread. The thread may be about to end, or be
/// the calling one. When many have been interrupted and have not ended yet, this waits for a moment, so that
/// whoever starts and stops without a break does not take all threads that the system has.
void Interrupt(TThreadHandle thread) noexcept;

/// How many interrupted threads may be about to end before others wait for them, and how long: not for ever,
/// as they may be in callbacks.
inline constexpr std::int32_t kManyEnding = 32;
inline constexpr std::uint32_t kLongestPause = 20; ///< milliseconds

/// Waits until the thread has ended.
void Join(TThreadHandle thread) noexcept;

/// A result of `WaitInterruptibly`.
inline constexpr std::uint32_t kInterrupted = 192;

/// Like `WaitForSeveral` without a limit, on a thread of `StartInterruptible`; `kInterrupted` when somebody
/// interrupted the thread, and perhaps at other times. With a count of 0 it fails until then.
std::uint32_t WaitInterruptibly(std::uint32_t count, const TEventHandle* events, bool isForAll) noexcept;

/// Sleeps on a thread of `StartInterruptible` until somebody interrupts it, and perhaps less long.
void SleepInterruptibly() noexcept;

/// Around a callback of the application on a thread of `StartInterruptible`: while it runs, nobody can know
/// when the thread ends.
void EnterCallback() noexcept;
void LeaveCallback() noexcept;

/// At the end of the library, when all those threads have been interrupted: returns when none of them runs
/// code of the library any more, those in a callback left out.
void AwaitInterrupted() noexcept;

/// At the end of the library: whether the system has already ended all other threads of the process, wherever
/// they were. They have then left locks held and never set what others wait for.
bool IsThreadLast() noexcept;

} // namespace vorlund::waiting
