/// \file
/// A callback for asynchronous waits that tells a test of its calls.
#pragma once

#include <vorlund/Event.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace vorlund::test {

/// What happens to the calls of one or several waits, which are given its address as their data. A wait must
/// have been stopped, and its callback have returned, before this goes.
class CAsyncCalls {
public:
    using TData = CEvent::TAsyncCbData;

    /// `act` is done in each call, on the wait's thread.
    explicit CAsyncCalls(std::function<void(TData&)> act = {}) : act_(std::move(act)) {}
    CAsyncCalls(const CAsyncCalls&) = delete;
    CAsyncCalls& operator=(const CAsyncCalls&) = delete;

    static void Callback(TData& data) { static_cast<CAsyncCalls*>(data.userData)->OnCall(data); }
    /// The same under another address.
    static void OtherCallback(TData& data) {
        CAsyncCalls& calls = *static_cast<CAsyncCalls*>(data.userData);
        calls.OnCall(data);
    }

    /// Waits until there have been that many calls that are over. False when it takes far too long.
    bool Reach(int calls) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(30), [=, this] { return ended_ >= calls; });
    }

    int Count() {
        const std::lock_guard lock(mutex_);
        return begun_;
    }

    /// The last call's data and thread.
    TData Last() {
        const std::lock_guard lock(mutex_);
        return last_;
    }
    std::thread::id LastThread() {
        const std::lock_guard lock(mutex_);
        return lastThread_;
    }

private:
    void OnCall(TData& data) {
        {
            const std::lock_guard lock(mutex_);
            ++begun_;
            last_ = data;
            lastThread_ = std::this_thread::get_id();
        }
        if (act_) act_(data);
        // Under the mutex: a test may end as soon as it sees the call.
        const std::lock_guard lock(mutex_);
        ++ended_;
        changed_.notify_all();
    }

    const std::function<void(TData&)> act_;
    std::mutex mutex_;
    std::condition_variable changed_;
    int begun_ = 0;
    int ended_ = 0;
    TData last_{};
    std::thread::id lastThread_;
};

} // namespace vorlund::test
