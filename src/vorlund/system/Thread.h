// What the locks need of threads. A port supplies `CurrentThreadId`, `IsThreadAlive`, `ParkWhile` and
// `UnparkOne` in a file Thread_<system>.cpp; a system without a call that sleeps on a word builds the last
// two from a mutex and a condition with CParkingLot (ParkingLot.h).
#pragma once

#include <atomic>
#include <cstdint>

namespace vorlund {

/// The calling thread's number: neither `kUnknownThread` nor `kNoThread`, the same for the whole life of the
/// thread, and different from that of every other living thread. It may be the system's own or a serial
/// number, but not a shortened pointer. Every lock operation asks for it, so it must cost no more than
/// reading a variable of the thread. Nobody reports the end of a thread, so an implementation keeps nothing
/// that would have to be given back.
unsigned int CurrentThreadId() noexcept;

inline constexpr unsigned int kUnknownThread = 0;
inline constexpr unsigned int kNoThread = ~0u;

#if defined(__ELF__)
/// Linux notes the number here when it first gives it, because a thread's variable costs one load in this
/// object format. Plain storage without a destructor; the model keeps it to that one load in a shared library
/// too, and four bytes always fit in what the loader sets aside for libraries that are loaded late.
[[gnu::tls_model("initial-exec")]] extern constinit thread_local unsigned int notedThreadId;

/// The calling thread's number, or `kUnknownThread` when it has not asked for it yet: then it holds nothing.
inline unsigned int NotedThreadId() noexcept {
    return notedThreadId;
}
#else
inline unsigned int NotedThreadId() noexcept {
    return CurrentThreadId();
}
#endif

/// Whether the thread of that number still runs. A number that another thread has got since counts as alive.
bool IsThreadAlive(unsigned int thread) noexcept;

/// Sleeps while `word` holds `value`; returns at once when it holds something else. Whoever changes the word
/// calls `UnparkOne` afterwards. May return early without a reason: callers check the word and call it again.
void ParkWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept;

/// Wakes one of the threads that sleep on the word at `address`, if any. Only the address is used: the word
/// itself may be gone, because the sleeper can have seen its change without being woken.
void UnparkOne(const void* address) noexcept;

} // namespace vorlund
