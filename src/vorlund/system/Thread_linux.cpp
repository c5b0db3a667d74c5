#include "vorlund/system/Thread_posix.h"

#include <cerrno>
#include <ctime>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vorlund {

constinit thread_local unsigned int notedThreadId = kUnknownThread;

namespace {

constexpr std::int64_t kSecond = 1000000000;

std::timespec TimeOf(std::int64_t nanoseconds) noexcept {
    std::timespec time{};
    time.tv_sec = static_cast<std::time_t>(nanoseconds / kSecond);
    time.tv_nsec = static_cast<long>(nanoseconds % kSecond);
    return time;
}

} // namespace

unsigned int CurrentThreadId() noexcept {
    // The child of a fork keeps the number of the thread that forked, so it can give back the locks of that
    // thread.
    if (notedThreadId == kUnknownThread) notedThreadId = static_cast<unsigned int>(syscall(SYS_gettid));
    return notedThreadId;
}

bool IsThreadAlive(unsigned int thread) noexcept {
    // The null signal only looks whether there is such a thread.
    return syscall(SYS_tgkill, getpid(), thread, 0) == 0 || errno != ESRCH;
}

std::int64_t MonotonicNanoseconds() noexcept {
    std::timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * kSecond + now.tv_nsec;
}

void ParkWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept {
    static_assert(sizeof word == sizeof value && std::atomic<std::uint32_t>::is_always_lock_free);
    syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
}

void ParkWhileUntil(const std::atomic<std::uint32_t>& word, std::uint32_t value,
                    std::int64_t deadline) noexcept {
    const std::timespec time = TimeOf(deadline);
    // The wait with a mask, because the plain one takes a duration instead of a point in time.
    syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, value, &time, nullptr, FUTEX_BITSET_MATCH_ANY);
}

void UnparkOne(const void* address) noexcept {
    syscall(SYS_futex, address, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

} // namespace vorlund
