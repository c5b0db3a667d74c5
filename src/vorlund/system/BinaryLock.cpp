// A plain lock that knows its owner.
//
// Owner and count are read without the lock. That is safe because the owner is written only by the thread
// that it names or that just held the lock: a thread finds itself there only if it is the owner, and what any
// other thread reads merely decides the wording of a refusal. The owner is cleared before the lock is given
// back; otherwise the former owner could see its own number beside the next owner's count.
#include "vorlund/api/values/ClassMemory.h"
#include "vorlund/system/PlainLock.h"
#include "vorlund/system/StoreLock.h"

#include <vorlund/BinaryLock.h>
#include <vorlund/Exception.h>

namespace vorlund {
namespace {

// Kept for callers who compare them: the destructor's name in all three, and the name of one system's file on
// every system.
constexpr const wchar* kMethod = VRL_L("vorlund::CBinaryLock::~CBinaryLock");
constexpr const wchar* kFile = VRL_L("src/vorlund/system/BinaryLock_win32");
constexpr TFailure kStillLocked{kMethod, kFile, 25, VRL_L("Still locked")};
constexpr TFailure kNotLocked{kMethod, kFile, 44, VRL_L("Not locked")};
constexpr TFailure kLockedElsewhere{kMethod, kFile, 46, VRL_L("Locked in another thread")};

// For a thread that does not hold the lock, and that has no number yet or did not get the lock at once. Not
// part of `CBinaryLock::Lock`, so that the usual way needs no stack.
[[gnu::noinline]] void LockPatiently(CPlainLock& lock, std::atomic<unsigned int>& owner) {
    lock.Lock();
    owner.store(CurrentThreadId(), std::memory_order_relaxed);
}

} // namespace

void RaiseStillLocked() {
    Raise<CBugException>(kStillLocked);
}

struct CBinaryLock::TData : TClassMemory {
    CPlainLock lock;
    std::atomic<unsigned int> owner{kNoThread};
    int nested = 0; ///< how often the owner holds the lock beyond the first time; under the lock

    bool IsHeld() const { return owner.load(std::memory_order_relaxed) != kNoThread; }
    bool IsHeldBy(unsigned int thread) const { return owner.load(std::memory_order_relaxed) == thread; }
};

CBinaryLock::CBinaryLock() : data_(new TData) {}

CBinaryLock::~CBinaryLock() noexcept(false) {
    // The data of a lock that is still held stays for the holder, who may yet unlock it.
    if (data_->IsHeld()) RaiseStillLocked();
    delete data_;
}

void CBinaryLock::Lock() {
    TData& data = *data_;
    const unsigned int thread = NotedThreadId();
    if (data.IsHeldBy(thread)) {
        ++data.nested;
    } else if (thread != kUnknownThread && data.lock.TryLock()) {
        data.owner.store(thread, std::memory_order_relaxed);
    } else {
        LockPatiently(data.lock, data.owner);
    }
}

void CBinaryLock::Unlock() {
    TData& data = *data_;
    if (!data.IsHeldBy(NotedThreadId())) Raise<CBugException>(data.IsHeld() ? kLockedElsewhere : kNotLocked);
    if (data.nested > 0) {
        --data.nested;
        return;
    }
    data.owner.store(kNoThread, std::memory_order_relaxed);
    data.lock.Unlock();
}

int CBinaryLock::GetHoldCount() const {
    return data_->IsHeldBy(NotedThreadId()) ? data_->nested + 1 : 0;
}

} // namespace vorlund
