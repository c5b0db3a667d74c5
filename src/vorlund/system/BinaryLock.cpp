// A plain lock that knows its owner.
//
// Owner and count are read without the lock. That is safe because the owner is written only by the thread
// that it names or that just held the lock: a thread finds itself there only if it is the owner, and what any
// other thread reads merely decides the wording of a refusal. The owner is cleared before the lock is given
// back; otherwise the former owner could see its own number beside the next owner's count.
#include "vorlund/system/PlainLock.h"

#include <vorlund/BinaryLock.h>
#include <vorlund/Exception.h>

#include <new>

namespace vorlund {
namespace {

// Kept on purpose: the destructor's name in all three, and the name of one system's file on every system.
constexpr const wchar* kMethod = VRL_L("vorlund::CBinaryLock::~CBinaryLock");
constexpr const wchar* kFile = VRL_L("src/vorlund/system/BinaryLock_win32");
constexpr TFailure kStillLocked{kMethod, kFile, 25, VRL_L("Still locked")};
constexpr TFailure kNotLocked{kMethod, kFile, 44, VRL_L("Not locked")};
constexpr TFailure kLockedElsewhere{kMethod, kFile, 46, VRL_L("Locked in another thread")};

constexpr unsigned int kNobody = 0;

} // namespace

struct CBinaryLock::TData {
    CPlainLock lock;
    std::atomic<unsigned int> owner{kNobody};
    std::atomic<int> count{0};

    bool IsOwner(unsigned int thread) const { return owner.load(std::memory_order_relaxed) == thread; }
    int GetCount() const { return count.load(std::memory_order_relaxed); }
    void SetCount(int value) { count.store(value, std::memory_order_relaxed); }
};

CBinaryLock::CBinaryLock() : data_(new (CClassObject::operator new(sizeof(TData))) TData) {}

CBinaryLock::~CBinaryLock() noexcept(false) {
    // Kept on purpose: the block of a lock that is still held stays, because its holder may yet come back to
    // it.
    if (data_->GetCount() > 0) Raise<CBugException>(kStillLocked);
    data_->~TData();
    CClassObject::operator delete(data_);
}

void CBinaryLock::Lock() {
    TData& data = *data_;
    const unsigned int thread = CurrentThreadId();
    if (data.IsOwner(thread)) {
        data.SetCount(data.GetCount() + 1);
        return;
    }
    data.lock.Lock();
    data.owner.store(thread, std::memory_order_relaxed);
    data.SetCount(1);
}

void CBinaryLock::Unlock() {
    TData& data = *data_;
    if (!data.IsOwner(CurrentThreadId())) [[unlikely]] {
        if (data.GetCount() == 0) Raise<CBugException>(kNotLocked);
        Raise<CBugException>(kLockedElsewhere);
    }
    const int count = data.GetCount() - 1;
    data.SetCount(count);
    if (count > 0) return;
    data.owner.store(kNobody, std::memory_order_relaxed);
    data.lock.Unlock();
}

int CBinaryLock::GetHoldCount() const {
    return data_->IsOwner(CurrentThreadId()) ? data_->GetCount() : 0;
}

} // namespace vorlund
