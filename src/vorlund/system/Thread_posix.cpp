#include "vorlund/system/ThreadPosix.h"

#include <ctime>
#include <unistd.h>

#if defined(__linux__)
#include <linux/futex.h>
#include <sys/syscall.h>
#else
#include "vorlund/system/ParkingLot.h"
#include <pthread.h>
#endif

namespace vorlund {

#if defined(__ELF__)
constinit thread_local unsigned int notedThreadId = kUnknownThread;
#else
static thread_local unsigned int notedThreadId = kUnknownThread;
#endif

namespace {

unsigned int NewThreadId() noexcept {
#if defined(__linux__)
    return static_cast<unsigned int>(syscall(SYS_gettid));
#else
    static std::atomic<unsigned int> last{kUnknownThread};
    unsigned int id = kUnknownThread;
    while (id == kUnknownThread || id == kNoThread) id = last.fetch_add(1, std::memory_order_relaxed) + 1;
    return id;
#endif
}

constexpr std::int64_t kSecond = 1000000000;

std::timespec TimeOf(std::int64_t nanoseconds) noexcept {
    std::timespec time{};
    time.tv_sec = static_cast<std::time_t>(nanoseconds / kSecond);
    time.tv_nsec = static_cast<long>(nanoseconds % kSecond);
    return time;
}

#if !defined(__linux__)
struct TMutex {
    void Lock() { pthread_mutex_lock(&mutex); }
    void Unlock() { pthread_mutex_unlock(&mutex); }
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
};

struct TCondition {
    TCondition() {
        pthread_condattr_t attributes;
        pthread_condattr_init(&attributes);
        pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
        pthread_cond_init(&condition, &attributes);
        pthread_condattr_destroy(&attributes);
    }
    ~TCondition() { pthread_cond_destroy(&condition); }
    void Wait(TMutex& held) { pthread_cond_wait(&condition, &held.mutex); }
    bool WaitUntil(TMutex& held, std::int64_t deadline) {
        const std::timespec time = TimeOf(deadline);
        return pthread_cond_timedwait(&condition, &held.mutex, &time) == 0;
    }
    void Notify() { pthread_cond_signal(&condition); }
    pthread_cond_t condition;
};

constinit CParkingLot<TMutex, TCondition> parkingLot;
#endif

} // namespace

unsigned int CurrentThreadId() noexcept {
    // A process made by fork keeps the number of the thread that forked, and so the locks that this thread
    // held.
    if (notedThreadId == kUnknownThread) notedThreadId = NewThreadId();
    return notedThreadId;
}

std::int64_t MonotonicNanoseconds() noexcept {
    std::timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * kSecond + now.tv_nsec;
}

#if defined(__linux__)

void ParkWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept {
    static_assert(sizeof word == sizeof value && std::atomic<std::uint32_t>::is_always_lock_free);
    syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
}

void ParkWhileUntil(const std::atomic<std::uint32_t>& word, std::uint32_t value,
                    std::int64_t deadline) noexcept {
    const std::timespec time = TimeOf(deadline);
    // Unlike the plain wait, the one with a mask takes a point in time.
    syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, value, &time, nullptr, FUTEX_BITSET_MATCH_ANY);
}

void UnparkOne(const void* address) noexcept {
    syscall(SYS_futex, address, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

#else

void ParkWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept {
    parkingLot.ParkWhile(word, value);
}

void ParkWhileUntil(const std::atomic<std::uint32_t>& word, std::uint32_t value,
                    std::int64_t deadline) noexcept {
    parkingLot.ParkWhileUntil(word, value, deadline);
}

void UnparkOne(const void* address) noexcept {
    parkingLot.UnparkOne(address);
}

#endif

} // namespace vorlund
