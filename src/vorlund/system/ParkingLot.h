// Sleeping on a word, for systems that only offer mutexes and conditions.
//
// A sleeper stands in the list of the bucket to which its word's address leads, with a condition of its own,
// so that a wake reaches the right thread. Whoever wakes has changed the word before it takes the bucket's
// mutex, and the sleeper checks the word while it holds that mutex: either the sleeper sees the change, or
// the waker sees the sleeper.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace vorlund {

/// `TMutex` has `Lock` and `Unlock` and is constant-initialised; `TCondition` has `Wait(TMutex&)`, which may
/// return early, and `Notify`; where threads sleep with a limit, also `WaitUntil(TMutex&, deadline)`, which
/// returns false when the time has come. Lots live for ever, in static storage.
template <class TMutex, class TCondition> class CParkingLot {
public:
    /// See `ParkWhile` in Thread.h.
    void ParkWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value) {
        TBucket& bucket = BucketOf(&word);
        bucket.mutex.Lock();
        if (word.load(std::memory_order_relaxed) == value) {
            TSleeper sleeper(&word);
            *bucket.end = &sleeper;
            bucket.end = &sleeper.next;
            do sleeper.condition.Wait(bucket.mutex);
            while (!sleeper.released);
        }
        bucket.mutex.Unlock();
    }

    /// The same until `deadline` at most.
    template <class TDeadline>
    void ParkWhileUntil(const std::atomic<std::uint32_t>& word, std::uint32_t value,
                        const TDeadline& deadline) {
        TBucket& bucket = BucketOf(&word);
        bucket.mutex.Lock();
        if (word.load(std::memory_order_relaxed) == value) {
            TSleeper sleeper(&word);
            *bucket.end = &sleeper;
            bucket.end = &sleeper.next;
            while (!sleeper.released) {
                if (sleeper.condition.WaitUntil(bucket.mutex, deadline) || sleeper.released) continue;
                TSleeper** link = &bucket.first;
                while (*link != &sleeper) link = &(*link)->next;
                Unlink(bucket, link);
                break;
            }
        }
        bucket.mutex.Unlock();
    }

    /// See `UnparkOne` in Thread.h.
    void UnparkOne(const void* address) {
        TBucket& bucket = BucketOf(address);
        bucket.mutex.Lock();
        for (TSleeper** link = &bucket.first; *link; link = &(*link)->next) {
            TSleeper& sleeper = **link;
            if (sleeper.address != address) continue;
            Unlink(bucket, link);
            sleeper.released = true;
            // Under the mutex: the sleeper takes its condition with it as soon as it may run.
            sleeper.condition.Notify();
            break;
        }
        bucket.mutex.Unlock();
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

    static void Unlink(TBucket& bucket, TSleeper** link) {
        *link = (*link)->next;
        if (!*link) bucket.end = link;
    }

    static constexpr std::size_t kBuckets = 64;

    TBucket& BucketOf(const void* address) {
        const auto number = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(address) >> 2);
        return buckets_[(number * 0x9E3779B9u) >> 26]; // Fibonacci hashing: the top six bits
    }

    TBucket buckets_[kBuckets];
};

} // namespace vorlund
