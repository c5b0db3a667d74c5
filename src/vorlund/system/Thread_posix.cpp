#include "vorlund/system/Thread.h"

#include <unistd.h>

#if defined(__linux__)
#include <linux/futex.h>
#include <sys/syscall.h>
#else
#include "vorlund/system/ParkingLot.h"
#include <pthread.h>
#endif

namespace vorlund {
namespace {

// Plain storage without a destructor. The model saves the call that a library otherwise needs for every
// access to a variable of the thread; four bytes always fit in what the loader keeps for libraries that come
// late.
[[gnu::tls_model("initial-exec")]] thread_local unsigned int currentThreadId = 0;

unsigned int MakeThreadId() noexcept {
#if defined(__linux__)
    return static_cast<unsigned int>(syscall(SYS_gettid));
#else
    static std::atomic<unsigned int> last{0};
    unsigned int id = 0;
    while (!id) id = last.fetch_add(1, std::memory_order_relaxed) + 1;
    return id;
#endif
}

#if !defined(__linux__)
struct TMutex {
    void Lock() { pthread_mutex_lock(&mutex); }
    void Unlock() { pthread_mutex_unlock(&mutex); }
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
};

struct TCondition {
    ~TCondition() { pthread_cond_destroy(&condition); }
    void Wait(TMutex& held) { pthread_cond_wait(&condition, &held.mutex); }
    void Notify() { pthread_cond_signal(&condition); }
    pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
};

constinit CParkingLot<TMutex, TCondition> parkingLot;
#endif

} // namespace

unsigned int CurrentThreadId() noexcept {
    // A process made by fork keeps the number of the thread that forked, and so the locks that this thread
    // held.
    if (!currentThreadId) [[unlikely]]
        currentThreadId = MakeThreadId();
    return currentThreadId;
}

#if defined(__linux__)

void ParkWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept {
    static_assert(sizeof word == sizeof value && std::atomic<std::uint32_t>::is_always_lock_free);
    syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
}

void UnparkOne(const void* address) noexcept {
    syscall(SYS_futex, address, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

#else

void ParkWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept {
    parkingLot.ParkWhile(word, value);
}

void UnparkOne(const void* address) noexcept {
    parkingLot.UnparkOne(address);
}

#endif

} // namespace vorlund
