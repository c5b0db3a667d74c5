/// \file
/// What this process holds of the system.
#pragma once

#include <chrono>
#include <thread>

namespace vorlund::test {

/// Threads of this process.
int CountThreads();

/// Waits until the process has no more than that many threads: those that were stopped have ended. False when
/// it takes far too long.
inline bool ThreadsComeDownTo(int count) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (CountThreads() > count) {
        if (std::chrono::steady_clock::now() > limit) return false;
        std::this_thread::yield();
    }
    return true;
}

/// Whether a hundred thousand threads, one after the other, take no more than some seconds.
bool AreThreadsCheap();

/// Handles of this process; 0 where the system has none.
int CountHandles();

} // namespace vorlund::test
