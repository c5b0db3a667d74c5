// What the locks need to know about threads, behind one header. A port supplies the three functions below in
// a file Thread_<system>.cpp and nothing else; systems without a call that sleeps on a word build the last
// two from a mutex and a condition with CParkingLot.
#pragma once

#include <atomic>
#include <cstdint>

namespace vorlund {

/// The calling thread's number: neither `kUnknownThread` nor `kNoThread`, the same for the whole life of the
/// thread, and different from that of every other living thread. It may be the system's own or a serial
/// number, but not a shortened pointer. Locks ask for it at every turn, so it must cost no more than reading
/// a variable of the thread. Nothing is told when a thread ends, so an implementation keeps nothing that
/// would have to be given back.
unsigned int CurrentThreadId() noexcept;

inline constexpr unsigned int kUnknownThread = 0;
inline constexpr unsigned int kNoThread = ~0u;

#if defined(__ELF__)
/// In this object format a variable of the thread costs one load, so a port notes the number here when it
/// first gives it. Plain storage without a destructor; the model keeps it to that one load in a shared
/// library too, and four bytes always fit in what the loader sets aside for libraries that come late.
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

/// Sleeps while `word` holds `value`; returns at once when it holds something else. Whoever changes the word
/// calls `UnparkOne` afterwards. May return early without a reason: callers check the word again and come
/// back.
void ParkWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept;

/// Wakes one of the threads that sleep on the word at `address`, if any. Only the address is used: the word
/// itself may be gone, because the sleeper can have seen its change without being woken.
void UnparkOne(const void* address) noexcept;

/// One turn of a short busy wait.
inline void RelaxProcessor() noexcept {
#if defined(__i386__) || defined(__x86_64__)
    __builtin_ia32_pause();
#endif
}

} // namespace vorlund
