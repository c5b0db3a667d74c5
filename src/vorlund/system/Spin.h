// The short busy wait before a thread sleeps.
#pragma once

namespace vorlund {

/// Sections under the locks are short, so looking around for a moment is often cheaper than sleep. The looks
/// become rarer, because each one takes the lock's word away from the thread that works with it: the first
/// follows one turn of a busy wait, each further one twice as many, and the last this many. All together take
/// one or two microseconds.
inline constexpr int kMaxSpins = 32;

/// A busy wait of that many turns.
inline void Spin(int turns) noexcept {
    for (int turn = 0; turn < turns; ++turn) {
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#elif defined(__aarch64__)
        // Waits for what was begun, about as long as an x86 pause; the instruction "yield" does nothing on
        // most.
        asm volatile("isb");
#else
        asm volatile("");
#endif
    }
}

} // namespace vorlund
