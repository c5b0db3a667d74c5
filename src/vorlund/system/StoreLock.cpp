#include "vorlund/system/StoreLock.h"

#include "vorlund/system/Spin.h"

#include <chrono>
#include <thread>

namespace vorlund {
namespace {

/// How long closing waits for a thread that holds the lock.
constexpr std::chrono::seconds kMaxCloseWait{2};

/// Closing looks this often. Nobody wakes it, because a thread that ends tells nobody.
constexpr std::chrono::milliseconds kLookAgain{1};

} // namespace

constinit CPlainLock storeGate;

bool CStoreLock::CanTake(TStoreUse use, unsigned int thread) const noexcept {
    if (owner_ == thread) return true;
    if (owner_ != kNoThread) return false;
    return use == TStoreUse::Shared ? waiting_ == waitingToShare_ : sharing_ == 0;
}

bool CStoreLock::Enter(TStoreUse use) noexcept {
    ++users_;
    bool isIn = true;
    if (use != TStoreUse::Pinned) {
        const unsigned int thread = CurrentThreadId();
        isIn = CanTake(use, thread) || WaitForTurn(use, thread);
        if (isIn && use == TStoreUse::Shared) {
            ++sharing_;
        } else if (isIn) {
            owner_ = thread;
            ++holds_;
            ++inside_;
        }
    }
    storeGate.Unlock();
    return isIn;
}

/// False when the store was closed meanwhile.
bool CStoreLock::WaitForTurn(TStoreUse use, unsigned int thread) noexcept {
    const int share = use == TStoreUse::Shared ? 1 : 0;
    ++waiting_;
    waitingToShare_ += share;
    while (!isClosed_ && !CanTake(use, thread)) {
        const std::uint32_t turn = turn_.load(std::memory_order_relaxed);
        storeGate.Unlock();
        for (int spins = 1; spins <= kMaxSpins && turn_.load(std::memory_order_relaxed) == turn; spins *= 2)
            Spin(spins);
        ParkWhile(turn_, turn);
        storeGate.Lock();
    }
    --waiting_;
    waitingToShare_ -= share;
    return !isClosed_;
}

bool CStoreLock::Leave(TStoreUse use, bool keepsLock) noexcept {
    storeGate.Lock();
    if (use == TStoreUse::Shared) {
        if (--sharing_ == 0) LetGo();
    } else if (use == TStoreUse::Exclusive && owner_ == CurrentThreadId()) {
        // Not the owner: this thread has closed the store in the middle of the operation.
        --inside_;
        if ((!keepsLock || isClosed_) && --holds_ == 0) LetGo();
    }
    const bool isLast = --users_ == 0 && isClosed_;
    OpenGateAndWake();
    return isLast;
}

int CStoreLock::GiveBack() noexcept {
    int count = 0;
    if (owner_ == CurrentThreadId()) {
        count = holds_ - inside_;
        holds_ = inside_;
        if (holds_ == 0) LetGo();
    }
    OpenGateAndWake();
    return count;
}

void CStoreLock::Close() noexcept {
    isClosed_ = true;
    ++users_;
    if (owner_ == CurrentThreadId()) {
        holds_ = 0;
        inside_ = 0;
        LetGo();
    }
    turn_.fetch_add(1, std::memory_order_relaxed);
    wakes_ = waiting_;
    OpenGateAndWake();
}

bool CStoreLock::WaitForHolder() noexcept {
    const auto deadline = std::chrono::steady_clock::now() + kMaxCloseWait;
    for (;; std::this_thread::sleep_for(kLookAgain)) {
        const CPlainLockGuard guard(storeGate);
        if (inside_ == 0 && sharing_ == 0) return owner_ != kNoThread;
        if (owner_ != kNoThread && !IsThreadAlive(owner_)) {
            users_ -= inside_;
            inside_ = 0;
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) return true;
    }
}

/// Nobody holds the lock any more.
void CStoreLock::LetGo() noexcept {
    owner_ = kNoThread;
    if (waiting_ == 0) return;
    turn_.fetch_add(1, std::memory_order_relaxed);
    // Those who want it alone come one by one. Of those who share, each may find that it is not its turn yet,
    // so one alone would not do.
    wakes_ = waitingToShare_ > 0 ? waiting_ : 1;
}

void CStoreLock::OpenGateAndWake() noexcept {
    const void* const address = &turn_;
    int wakes = std::exchange(wakes_, 0);
    storeGate.Unlock();
    // From here on the data may be gone.
    for (; wakes > 0; --wakes) UnparkOne(address);
}

} // namespace vorlund
