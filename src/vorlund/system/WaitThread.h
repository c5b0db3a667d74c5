// The threads that this library starts for timers and asynchronous waits. A port supplies everything declared
// here in a file WaitThread_<system>.cpp. Nothing here raises.
//
// What is called while a lock of this library is held never waits for the system's own lock around loading
// and unloading: destructors of static objects run under that one, and wait for ours.
#pragma once

#include "vorlund/system/Waiting.h"

namespace vorlund::waiting {

/// Keeps the library loaded, on systems where a thread that will be interrupted needs that. Made without a
/// lock of ours.
class CLibraryHold {
public:
    CLibraryHold() noexcept;
    CLibraryHold(const CLibraryHold&) = delete;
    CLibraryHold& operator=(const CLibraryHold&) = delete;
    ~CLibraryHold(); // NOLINT(performance-trivially-destructible): not on every system

private:
    friend struct TThread* StartInterruptible(void (*run)(void*), void* argument,
                                              CLibraryHold& hold) noexcept;
    [[maybe_unused]] void* module_ = nullptr; // not on every system
};

/// A thread of an asynchronous wait.
using TThreadHandle = struct TThread*;

/// Starts a thread that calls `run(argument)`, with the default stack; null when the system has no thread to
/// give. The thread takes the hold over: the library stays loaded until every such thread has ended, unless
/// `AwaitInterrupted` waits for them. `Join` gives the handle back.
TThreadHandle StartInterruptible(void (*run)(void*), void* argument, CLibraryHold& hold) noexcept;

/// Ends the present `WaitInterruptibly` or `SleepInterruptibly` of a thread that is still in `run`, or else
/// its next one.
void Interrupt(TThreadHandle thread) noexcept;

/// Waits until a thread that is about to return from `run` has ended.
void Join(TThreadHandle thread) noexcept;

/// A result of `WaitInterruptibly`.
inline constexpr std::uint32_t kInterrupted = 192;

/// Like `WaitForSeveral` without a limit, on a thread of `StartInterruptible`; `kInterrupted` when somebody
/// interrupted the thread, and perhaps at other times. With a count that `WaitForSeveral` refuses it fails,
/// whether interrupted or not.
std::uint32_t WaitInterruptibly(std::uint32_t count, const TEventHandle* events, bool isForAll) noexcept;

/// Sleeps on a thread of `StartInterruptible` until somebody interrupts it, and perhaps less long. False when
/// the time has passed.
bool SleepInterruptibly(std::uint32_t milliseconds) noexcept;

/// Called around a callback of the application on a thread of `StartInterruptible`: a thread inside a
/// callback is not waited for at the end of a process, because nobody can know when it returns.
void EnterCallback() noexcept;
void LeaveCallback() noexcept;

/// At the end of the library, when all those threads are about to end: returns when none of them can run code
/// of the library any more. When the process ends, those in a callback excepted.
void AwaitInterrupted() noexcept;

/// `Join` at the end of the library, of the last thread that has ended. Null does nothing.
void JoinLast(TThreadHandle thread) noexcept;

/// The thread of the timers.
using TWorkHandle = struct TWork*;

/// Starts a thread that calls `run(argument)` once, with the default stack; null when the system has none to
/// give.
TWorkHandle StartWork(void (*run)(void*), void* argument) noexcept;

/// Returns when `run` has returned, or when it is certain that it will never be called. The thread then runs
/// no code of the library any more. Waits for nothing else: the thread may still have to be ended by the
/// system, which lets none begin or end while it loads or unloads something.
void EndWork(TWorkHandle work) noexcept;

/// Whether the process ends and the system has already ended all its other threads, wherever they were. They
/// have then left locks held and never set what others wait for.
bool IsThreadLast() noexcept;

} // namespace vorlund::waiting
