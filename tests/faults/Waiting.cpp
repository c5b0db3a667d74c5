// Events, timers and locks, with threads of the library and of the application.
#include "faults/FaultPoints.h"
#include "faults/Scenario.h"

#include <vorlund/BinaryLock.h>
#include <vorlund/Event.h>
#include <vorlund/Exception.h>
#include <vorlund/ReadWriteLock.h>
#include <vorlund/Timer.h>
#include <vorlund/WaitSet.h>

#include <atomic>
#include <exception>
#include <new>
#include <system_error>
#include <thread>

namespace vorlund::faults {
namespace {

/// Does `act` on a thread of its own and passes on what it raises; joins in any case.
template <class TAct> class CHelper {
public:
    explicit CHelper(TAct act)
        : thread_([this, act] {
              try {
                  act();
              } catch (...) {
                  failure_ = std::current_exception();
              }
          }) {}
    CHelper(const CHelper&) = delete;
    CHelper& operator=(const CHelper&) = delete;
    ~CHelper() {
        if (thread_.joinable()) thread_.join();
    }
    void Join() {
        thread_.join();
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    std::exception_ptr failure_;
    std::thread thread_;
};

/// Stops a wait on every way out.
class CStop {
public:
    explicit CStop(unsigned int handle) : handle_(handle) {}
    CStop(const CStop&) = delete;
    CStop& operator=(const CStop&) = delete;
    ~CStop() { CEvent::StopAsync(handle_); }

private:
    unsigned int handle_;
};

/// What a callback of an asynchronous wait works with; it lives longer than every callback.
struct TCalled {
    std::atomic<int> count = 0;
    std::atomic<CEvent*> done = nullptr;
};
TCalled called;

void OnSet(CEvent::TAsyncCbData& data) {
    try {
        data.event->SetState(false);
        auto& state = *static_cast<TCalled*>(data.userData);
        ++state.count;
        if (CEvent* const done = state.done) done->SetState(true);
    } catch (...) {
        // A callback must not raise.
    }
}

void OnSetInSet(CWaitSet::TCbData& data) {
    CEvent::TAsyncCbData same{};
    same.event = data.event;
    same.userData = data.userData;
    OnSet(same);
}

/// An event that tells of callbacks, which may come late: it is never destroyed.
CEvent& GetDone() {
    static CEvent* const done = [] {
        const CPause pause;
        return new CEvent;
    }();
    called.count = 0;
    called.done = done;
    done->SetState(false);
    return *done;
}

} // namespace

void RunEvents(CResult& result) {
    CEvent first;
    CEvent second;
    CEvent copy(first);
    first.SetState(true);
    result.Add("%d ", copy.GetState());
    result.Add("%u ", CEvent::WaitOne(GetWaitLimit(), 2, &second, &copy));
    second.SetState(true);
    CEvent::WaitAll(GetWaitLimit(), 2, &first, &second);
    second.SetState(false);
    CEvent answer;
    CHelper helper([&] {
        CEvent::Wait(GetWaitLimit(), second);
        answer.SetState(true);
    });
    second.SetState(true);
    answer.Wait(GetWaitLimit());
    helper.Join();
    copy = second;
    result.Add("%d", copy.GetState());
}

void RunAsyncWaits(CResult& result) {
    CEvent first;
    CEvent second;
    CEvent* const done = &GetDone();
    {
        const CStop one(first.WaitAsync(&OnSet, &called));
        first.SetState(true);
        done->Wait(GetWaitLimit());
        done->SetState(false);
    }
    {
        const CStop any(CEvent::WaitOneAsync(&OnSet, &called, 2, &first, &second));
        second.SetState(true);
        done->Wait(GetWaitLimit());
        done->SetState(false);
    }
    second.SetState(false);
    {
        // Stopped before anything happens, by its callback.
        CEvent::WaitAllAsync(&OnSet, &called, 2, &first, &second);
        CEvent::StopAsync(&OnSet);
    }
    result.Add("%d calls", called.count.load());
}

void RunWaitSet(CResult& result) {
    CEvent first;
    CEvent second;
    CEvent& done = GetDone();
    CWaitSet set(2);
    const unsigned int number = set.Add(first, &OnSetInSet, &called);
    first.SetState(true);
    done.Wait(GetWaitLimit());
    done.SetState(false);
    // Where the system refused the threads, they are tried again.
    set.AddOnce(second, &OnSetInSet, &called);
    second.SetState(true);
    done.Wait(GetWaitLimit());
    set.Remove(number);
    set.Stop();
    result.Add("%u, %d calls", number, called.count.load());
}

void RunTimers(CResult& result) {
    CTimer fast(0.002f);
    CTimer slow(60);
    fast.Start();
    slow.Start();
    fast.Wait(GetWaitLimit());
    fast.SetState(false);
    fast.Wait(GetWaitLimit());
    fast.Stop();
    slow.Stop();
    fast.SetState(false);
    fast.Start();
    CEvent::WaitOne(GetWaitLimit(), 2, &slow, &fast);
    result.Add("the slow one: %d", slow.GetState());
}

void RunLocks(CResult& result) {
    CBinaryLock lock;
    CReadWriteLock shared;
    int value = 0;
    {
        CHelper helper([&] {
            for (int i = 0; i < 20; ++i) {
                const CBinaryLockGuard guard(lock);
                const CReadWriteLockGuard writing(shared, LOCK_MODE_WRITE);
                ++value;
            }
        });
        for (int i = 0; i < 20; ++i) {
            const CReadWriteLockGuard reading(shared, LOCK_MODE_READ);
            const CReadWriteLockGuard nested(shared, LOCK_MODE_READ);
            result.Add("%s", shared.GetLockMode() == LOCK_MODE_READ ? "" : "?");
        }
        for (int i = 0; i < 20; ++i) {
            const CBinaryLockGuard guard(lock);
            const CReadWriteLockGuard writing(shared, LOCK_MODE_WRITE);
            ++value;
        }
        helper.Join();
    }
    result.Add("%d", value);
}

} // namespace vorlund::faults
