// The present opening of an output or an input.
#pragma once

#include "vorlund/devices/audio/Finally.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

namespace vorlund {

// An opening is a session of its own, so that what other threads are still doing with the last one ends there
// while the next one begins. The port belongs to one session at a time: `isBusy_` is set while one is opened
// or ended. Who comes to close meanwhile finds no session: a stream that closes its output from the feeder
// must not wait for the thread that waits for the feeder.
template <class TSession> class CSessionSlot {
public:
    using TPointer = std::shared_ptr<TSession>;

    /// Null without one.
    TPointer Get() {
        const std::lock_guard lock(mutex_);
        return session_;
    }

    /// Calls `end` with the session that is open, and then opens that which `make` gives.
    template <class TEnd, class TMake> void Open(TEnd end, TMake make) {
        std::unique_lock lock(mutex_);
        while (isBusy_) changed_.wait(lock);
        const TPointer last = Take();
        lock.unlock();
        const CFinally done([this] { GiveBack(); });
        if (last) end(*last);
        TPointer next = make();
        lock.lock();
        session_ = std::move(next);
        lock.unlock();
    }

    /// Calls `end` with the session that is open; nothing happens without one.
    template <class TEnd> void Close(TEnd end) {
        std::unique_lock lock(mutex_);
        if (!session_) return;
        const TPointer last = Take();
        lock.unlock();
        const CFinally done([this] { GiveBack(); });
        end(*last);
    }

private:
    TPointer Take() {
        isBusy_ = true;
        return std::exchange(session_, nullptr);
    }
    void GiveBack() {
        const std::lock_guard lock(mutex_);
        isBusy_ = false;
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    bool isBusy_ = false;
    TPointer session_;
};

} // namespace vorlund
