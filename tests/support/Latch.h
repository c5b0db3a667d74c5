/// \file
/// A point where threads wait for one another. The standard library's own loses wakes on Windows (libstdc++
/// 12 on winpthreads), which looks like a deadlock of what is tested.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace vorlund::test {

/// Opens for good when it has been counted down to 0. A wait that takes far too long ends the program with a
/// message.
class CLatch {
public:
    explicit CLatch(int count) : count_(count) {}
    CLatch(const CLatch&) = delete;
    CLatch& operator=(const CLatch&) = delete;

    void CountDown() {
        // Under the mutex: a waiter may destroy the latch as soon as it runs.
        const std::lock_guard guard(mutex_);
        if (--count_ == 0) opened_.notify_all();
    }
    void Wait() {
        std::unique_lock lock(mutex_);
        if (opened_.wait_for(lock, std::chrono::minutes(2), [this] { return count_ <= 0; })) return;
        std::fputs("a latch of this test never opened\n", stderr);
        std::abort();
    }
    void ArriveAndWait() {
        CountDown();
        Wait();
    }

private:
    std::mutex mutex_;
    std::condition_variable opened_;
    int count_;
};

} // namespace vorlund::test
