// The lock of a store, and what keeps the store's data while threads are inside and another one closes it.
//
// A store is one pointer to its data, null while it is closed. The lock is in the data, so a thread that has
// read the pointer could find the data gone before it reaches the lock. That is why one small lock of the
// whole process, the gate, guards every such pointer together with the state of the locks behind it: an
// operation reads the pointer, counts as inside and takes the lock (or joins those who wait for it) in one
// step. The gate is held for a few instructions; nobody sleeps, allocates or calls anything with it, and no
// other lock is taken under it.
//
// Closing takes the data out of the store, gives back what the closing thread holds, and sends everybody away
// who waits. It waits for the operations that hold the lock, but not for ever: a factory may take its time. A
// lock that was left behind with a thread is not waited for, because the thread cannot reach it any more.
// Whoever is the last inside destroys the data, be it the closing thread or another one. A thread that has
// ended is inside no more.
#pragma once

#include "vorlund/system/PlainLock.h"

#include <memory>
#include <utility>

namespace vorlund {

/// How an operation uses a store.
enum class TStoreUse {
    Pinned,   ///< the data stay; no lock is taken
    Shared,   ///< together with others that share
    Exclusive ///< alone; the same thread may come again
};

/// Guards the pointers of all stores and the members of all store locks.
extern constinit CPlainLock storeGate;

/// The lock in a store's data. Threads that share take it once; those that want it alone go before them, and
/// may take it again.
class CStoreLock {
public:
    CStoreLock() = default;
    CStoreLock(const CStoreLock&) = delete;
    CStoreLock& operator=(const CStoreLock&) = delete;

    /// Counts the calling thread as inside and takes the lock. False when the store was closed before it got
    /// it: then it is inside, without the lock. Expects the gate held, and gives it back.
    bool Enter(TStoreUse use) noexcept;

    /// Ends an `Enter`. With `keepsLock` the lock stays with the thread, if the store is open. True when the
    /// store is closed and nobody is inside any more: the caller destroys the data.
    bool Leave(TStoreUse use, bool keepsLock) noexcept;

    /// Gives back what the calling thread holds beyond the operations that it is inside of; returns how many
    /// times that was. Expects the gate held, and gives it back.
    int GiveBack() noexcept;

    /// What closes the store: gives back everything that the calling thread holds, and wakes who waits. The
    /// calling thread counts as inside afterwards. Expects the gate held, and gives it back.
    void Close() noexcept;

    /// Waits for the operations that hold the closed store's lock, `kMaxCloseWait` at most and not for those
    /// of a thread that has ended, whose share it takes. True when the lock is held all the same.
    bool WaitForHolder() noexcept;

private:
    bool CanTake(TStoreUse use, unsigned int thread) const noexcept;
    bool WaitForTurn(TStoreUse use, unsigned int thread) noexcept;
    void LetGo() noexcept;
    void OpenGateAndWake() noexcept;

    bool isClosed_ = false;
    unsigned int owner_ = kNoThread; ///< who holds it alone
    int holds_ = 0;                  ///< how often, what was left with the owner included
    int inside_ = 0;                 ///< how many operations of the owner hold it
    int sharing_ = 0;                ///< operations that hold it together
    int users_ = 0;                  ///< operations inside, whatever they hold or wait for
    int waiting_ = 0;
    int waitingToShare_ = 0;             ///< of those
    int wakes_ = 0;                      ///< how many to wake when the gate opens
    std::atomic<std::uint32_t> turn_{0}; ///< changes when those who wait must look again
};

/// An operation on a store whose data are a `TData` with a member `lock`. Empty when the store is closed.
template <class TData> class CStoreAccess {
public:
    CStoreAccess(TData* const& store, TStoreUse use) noexcept : use_(use) {
        storeGate.Lock();
        TData* const data = store;
        if (!data) {
            storeGate.Unlock();
        } else if (data->lock.Enter(use)) {
            data_ = data;
        } else if (data->lock.Leave(TStoreUse::Pinned, false)) {
            delete data; // NOLINT(clang-analyzer-cplusplus.NewDelete): as below
        }
    }
    CStoreAccess(const CStoreAccess&) = delete;
    CStoreAccess& operator=(const CStoreAccess&) = delete;
    ~CStoreAccess() { Leave(); }

    explicit operator bool() const { return data_ != nullptr; }
    // The analyzer takes every `Leave` for the last one.
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete)
    TData* operator->() const { return data_; }
    TData& operator*() const { return *data_; }

    /// Whether the lock stays with the thread when the operation ends.
    void KeepLock(bool keeps) { keepsLock_ = keeps; }

    /// Ends the operation now.
    void Leave() noexcept {
        TData* const data = std::exchange(data_, nullptr);
        if (data && data->lock.Leave(use_, keepsLock_)) delete data;
    }

private:
    TData* data_ = nullptr;
    const TStoreUse use_;
    bool keepsLock_ = false;
};

/// Opens a store that is closed.
template <class TData> void OpenStore(TData*& store) {
    const auto isOpen = [&store] {
        const CPlainLockGuard guard(storeGate);
        return store != nullptr;
    };
    if (isOpen()) return;
    auto data = std::make_unique<TData>();
    const CPlainLockGuard guard(storeGate);
    if (!store) store = data.release();
}

/// Closes a store that is open. True when another thread still holds its lock; the store is closed all the
/// same.
template <class TData> [[nodiscard]] bool CloseStore(TData*& store) noexcept {
    storeGate.Lock();
    TData* const data = std::exchange(store, nullptr);
    if (!data) {
        storeGate.Unlock();
        return false;
    }
    data->lock.Close();
    const bool isHeld = data->lock.WaitForHolder();
    if (data->lock.Leave(TStoreUse::Pinned, false)) delete data;
    return isHeld;
}

/// Gives back what earlier operations have left with the calling thread; returns how many times that was.
template <class TData> int GiveBackStore(TData* const& store) noexcept {
    storeGate.Lock();
    if (store) return store->lock.GiveBack();
    storeGate.Unlock();
    return 0;
}

/// Raises what a `CBinaryLock` raises that is destroyed while it is held.
[[noreturn]] void RaiseStillLocked();

} // namespace vorlund
