/// \file
/// Callbacks for events, of asynchronous waits and of sets, that tell a test of their calls.
#pragma once

#include <vorlund/Event.h>
#include <vorlund/WaitSet.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

namespace vorlund::test {

/// What happens to the calls of one or several waits or entries, which are given its address as their data.
/// They must have been stopped, and their callbacks have returned, before this goes.
template <class TCbData> class CEventCalls {
public:
    using TData = TCbData;

    /// `act` is done in each call, on its thread.
    explicit CEventCalls(std::function<void(TData&)> act = {}) : act_(std::move(act)) {}
    CEventCalls(const CEventCalls&) = delete;
    CEventCalls& operator=(const CEventCalls&) = delete;

    static void Callback(TData& data) { static_cast<CEventCalls*>(data.userData)->OnCall(data); }
    /// The same under another address.
    static void OtherCallback(TData& data) {
        CEventCalls& calls = *static_cast<CEventCalls*>(data.userData);
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
    /// Of all calls.
    std::set<std::thread::id> Threads() {
        const std::lock_guard lock(mutex_);
        return threads_;
    }

private:
    void OnCall(TData& data) {
        {
            const std::lock_guard lock(mutex_);
            ++begun_;
            last_ = data;
            lastThread_ = std::this_thread::get_id();
            threads_.insert(lastThread_);
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
    std::set<std::thread::id> threads_;
};

using CAsyncCalls = CEventCalls<CEvent::TAsyncCbData>;
using CSetCalls = CEventCalls<CWaitSet::TCbData>;

/// Time for a call that must not come.
inline void LetOthersRun() {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

/// Whether there is a call when the event is set, which the callback resets.
template <class TCbData> bool Responds(CEvent& event, CEventCalls<TCbData>& calls) {
    const int before = calls.Count();
    event.SetState(true);
    return calls.Reach(before + 1);
}

} // namespace vorlund::test
