// The thread of a port that the library implements itself.
#pragma once

#include <atomic>
#include <functional>
#include <thread>

#include "vorlund/system/Signal.h"

namespace vorlund {

/// Runs a function until it is stopped. Started and stopped by one thread at a time.
class CPortThread {
public:
    CPortThread() = default;
    CPortThread(const CPortThread&) = delete;
    CPortThread& operator=(const CPortThread&) = delete;
    ~CPortThread() { Stop(); }

    /// Nothing happens when it runs. Raises `std::system_error` when the system has no thread to give.
    void Start(std::function<void()> run) {
        if (thread_.joinable()) return;
        isStopping_ = false;
        thread_ = std::thread(std::move(run));
    }
    /// Returns when the function has; nothing happens when it does not run.
    void Stop() {
        isStopping_ = true;
        signal_.Notify();
        if (thread_.joinable()) thread_.join();
    }

    /// For the function: whether it is to return, and what it waits for.
    bool IsStopping() const { return isStopping_; }
    CSignal& GetSignal() { return signal_; }

private:
    std::atomic<bool> isStopping_ = false;
    CSignal signal_;
    std::thread thread_;
};

} // namespace vorlund
