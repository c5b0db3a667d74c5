/// \file
/// Threads that do what a test tells them, one step at a time, so that a test can say who does what when.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace vorlund::test {

/// A thread that waits for steps. A step that waits for ever ends the program with a message when the actor
/// goes.
class CActor {
public:
    CActor() : thread_([this] { Run(); }) {}
    CActor(const CActor&) = delete;
    CActor& operator=(const CActor&) = delete;
    ~CActor() {
        if (!Finishes()) {
            std::fputs("an actor of this test never came back\n", stderr);
            std::abort();
        }
        Set([this] { ending_ = true; });
        thread_.join();
    }

    /// Begins a step, when the one before is over; returns when the actor's thread is about to do it.
    void Start(std::function<void()> step) {
        ASSERT_TRUE(Finishes()) << "the step before";
        Set([&] { step_ = std::move(step); });
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !step_ || !busy_; });
    }

    /// Does a step and waits for its end.
    void Do(std::function<void()> step) {
        Start(std::move(step));
        ASSERT_TRUE(Finishes());
    }

    /// Waits for the end of the step. False when it takes far too long.
    bool Finishes() { return WaitFor(std::chrono::seconds(30)); }

    /// Whether the step is still not over after a moment: it seems to be blocked.
    bool StaysBusy() { return !WaitFor(std::chrono::milliseconds(40)); }

private:
    bool WaitFor(std::chrono::milliseconds limit) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, limit, [this] { return !busy_; });
    }

    template <class TChange> void Set(TChange change) {
        {
            const std::lock_guard lock(mutex_);
            change();
            busy_ = true;
        }
        changed_.notify_all();
    }

    void Run() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return step_ || ending_; });
            if (!step_) return;
            const std::function<void()> step = std::exchange(step_, nullptr);
            lock.unlock();
            changed_.notify_all();
            step();
            lock.lock();
            busy_ = false;
            changed_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::function<void()> step_;
    bool busy_ = false;
    bool ending_ = false;
    std::thread thread_; // last: it uses the others
};

} // namespace vorlund::test
