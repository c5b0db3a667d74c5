// Sleeping on a word, for systems that only offer mutexes and conditions (Thread_win32.cpp).
//
// The address of a word leads to a bucket, whose list holds the sleepers, each with a condition of its own,
// so that a wake reaches the right thread. Whoever wakes has changed the word before it takes the bucket's
// mutex, and the sleeper checks the word while it holds that mutex: either the sleeper sees the change, or
// the waker sees the sleeper.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace vorlund {

/// `TMutex` is what std::lock_guard takes; `TCondition` has `Wait(TMutex&)`, which may return early, and
/// `Notify`. A lot is never destroyed while the process runs.
template <class TMutex, class TCondition> class CParkingLot {
public:
    /// See `ParkWhile` in Thread.h.
    void ParkWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value) {
        TBucket& bucket = BucketOf(&word);
        const std::lock_guard guard(bucket.mutex);
        if (word.load(std::memory_order_relaxed) != value) return;
        TSleeper sleeper(&word);
        *bucket.end = &sleeper;
        bucket.end = &sleeper.next;
        do sleeper.condition.Wait(bucket.mutex);
        while (!sleeper.released);
    }

    /// See `UnparkOne` in Thread.h.
    void UnparkOne(const void* address) {
        TBucket& bucket = BucketOf(address);
        const std::lock_guard guard(bucket.mutex);
        for (TSleeper** link = &bucket.first; *link; link = &(*link)->next) {
            TSleeper& sleeper = **link;
            if (sleeper.address != address) continue;
            *link = sleeper.next;
            if (!*link) bucket.end = link;
            sleeper.released = true;
            // Under the mutex: as soon as the sleeper may run, it destroys its condition.
            sleeper.condition.Notify();
            return;
        }
    }

private:
    struct TSleeper {
        explicit TSleeper(const void* slept) : address(slept) {}
        const void* const address;
        TSleeper* next = nullptr;
        bool released = false;
        TCondition condition;
    };

    struct TBucket {
        TMutex mutex;
        TSleeper* first = nullptr;
        TSleeper** end = &first;
    };

    static constexpr std::size_t kBuckets = 64;

    TBucket& BucketOf(const void* address) {
        const auto number = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(address) >> 2);
        return buckets_[(number * 0x9E3779B9u) >> 26]; // Fibonacci hashing: the top six bits
    }

    TBucket buckets_[kBuckets];
};

} // namespace vorlund
