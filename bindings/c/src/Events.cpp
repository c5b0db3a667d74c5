// Events and timers.

#include "vorlund_c/event.h"

#include "Calls.h"

#include <vorlund/EventWaits.h>
#include <vorlund/Timer.h>

#include <map>
#include <mutex>
#include <vector>

namespace vorlund::capi {

namespace {

/// A function of the host that is called when an event is set. A call may begin when the wait was stopped
/// already, so it finds what it needs by a number.
struct TCalled {
    vorlund_event_callback callback;
    void* user;
    vorlund_event handle;
    /// The same platform event.
    CEvent event;
};

std::mutex calledMutex;
std::uintptr_t lastNumber = 0;
/// Never destroyed: threads of the library may look until the end.
std::map<std::uintptr_t, std::shared_ptr<TCalled>>& AllCalled() {
    static auto& all = *new std::map<std::uintptr_t, std::shared_ptr<TCalled>>;
    return all;
}

void OnSet(CEvent::TAsyncCbData& data) {
    std::shared_ptr<TCalled> called;
    {
        const std::lock_guard lock(calledMutex);
        const auto found = AllCalled().find(reinterpret_cast<std::uintptr_t>(data.userData));
        if (found == AllCalled().end()) return;
        called = found->second;
    }
    called->event.SetState(false);
    CallHost([&] {
        called->callback(called->user, called->handle);
        return VORLUND_OK;
    });
}

class CEventObject final : public CHandleObject {
public:
    static constexpr TKind Kind = TKind::Event;

    CEventObject() : CHandleObject(Kind), event_(std::make_unique<CEvent>()) {}
    explicit CEventObject(std::uint32_t milliseconds) : CHandleObject(Kind) {
        // Above the number of milliseconds, because what is below it loses one.
        auto timer = std::make_unique<CTimer>((static_cast<float>(milliseconds) + 0.25F) / 1000.0F);
        timer_ = timer.get();
        event_ = std::move(timer);
    }
    ~CEventObject() override { StopCalling(); }

    CEvent& Get() const { return *event_; }
    CTimer& GetTimer() const {
        Require(timer_, "The event is no timer");
        return *timer_;
    }

    void StartCalling(vorlund_event_callback callback, void* user, vorlund_event handle) {
        const std::lock_guard lock(mutex_);
        Stop();
        if (!callback) return;
        const auto called = std::make_shared<TCalled>(TCalled{callback, user, handle, *event_});
        {
            const std::lock_guard numberLock(calledMutex);
            AllCalled()[++lastNumber] = called;
            number_ = lastNumber;
        }
        wait_ = event_->WaitAsync(&OnSet, reinterpret_cast<void*>(number_));
    }
    void StopCalling() {
        const std::lock_guard lock(mutex_);
        Stop();
    }

private:
    void Stop() {
        if (number_ == 0) return;
        CEvent::StopAsync(wait_);
        const std::lock_guard lock(calledMutex);
        AllCalled().erase(std::exchange(number_, 0));
    }

    std::unique_ptr<CEvent> event_;
    CTimer* timer_ = nullptr;
    std::mutex mutex_;
    std::uintptr_t number_ = 0;
    unsigned int wait_ = 0;
};

/// Waits for events by their handles.
std::uint32_t Wait(const vorlund_event* handles, std::uint32_t count, bool isForAll,
                   std::int32_t milliseconds) {
    RequirePointer(handles);
    Require(count >= 1 && count <= kMaxWaitedEvents, "A wait takes 1 to 64 events");
    std::vector<std::shared_ptr<CEventObject>> objects;
    std::vector<const CEvent*> events;
    for (std::uint32_t i = 0; i < count; ++i) {
        objects.push_back(Find<CEventObject>(handles[i]));
        for (const CEvent* const other : events)
            Require(!isForAll || other != &objects.back()->Get(), "An event is there twice");
        events.push_back(&objects.back()->Get());
    }
    const std::uint32_t result = WaitForEvents(events.data(), count, isForAll, milliseconds);
    if (result == kWaitTimedOut) throw CFailure(VORLUND_ERROR_TIMEOUT, "Timeout");
    if (result == kWaitFailed) throw CFailure(VORLUND_ERROR_FAILED, "The system refuses the wait");
    return result;
}

} // namespace

} // namespace vorlund::capi

using namespace vorlund::capi;

int32_t VORLUND_CALL vorlund_event_create(vorlund_event* event) {
    return Guarded(__func__, [&] {
        RequirePointer(event);
        MakeHandle<CEventObject>(event);
    });
}

int32_t VORLUND_CALL vorlund_event_set(vorlund_event event) {
    return On<CEventObject>(__func__, event, [](CEventObject& object) { object.Get().SetState(true); });
}

int32_t VORLUND_CALL vorlund_event_reset(vorlund_event event) {
    return On<CEventObject>(__func__, event, [](CEventObject& object) { object.Get().SetState(false); });
}

int32_t VORLUND_CALL vorlund_event_is_set(vorlund_event event, int32_t* is_set) {
    return Ask<CEventObject>(__func__, event, is_set,
                             [](CEventObject& object) { return object.Get().GetState(); });
}

int32_t VORLUND_CALL vorlund_event_wait(vorlund_event event, int32_t milliseconds) {
    return Guarded(__func__, [&] { Wait(&event, 1, false, milliseconds); });
}

int32_t VORLUND_CALL vorlund_event_wait_any(const vorlund_event* events, uint32_t count, int32_t milliseconds,
                                            uint32_t* index) {
    return Guarded(__func__, [&] {
        RequirePointer(index);
        *index = Wait(events, count, false, milliseconds);
    });
}

int32_t VORLUND_CALL vorlund_event_wait_all(const vorlund_event* events, uint32_t count,
                                            int32_t milliseconds) {
    return Guarded(__func__, [&] { Wait(events, count, true, milliseconds); });
}

int32_t VORLUND_CALL vorlund_event_on_set(vorlund_event event, vorlund_event_callback callback, void* user) {
    return On<CEventObject>(__func__, event,
                            [&](CEventObject& object) { object.StartCalling(callback, user, event); });
}

int32_t VORLUND_CALL vorlund_timer_create(uint32_t milliseconds, vorlund_event* timer) {
    return Guarded(__func__, [&] {
        RequirePointer(timer);
        Require(milliseconds >= 1 && milliseconds <= 2147483, "The period must be 1 to 2147483 milliseconds");
        MakeHandle<CEventObject>(timer, milliseconds);
    });
}

int32_t VORLUND_CALL vorlund_timer_start(vorlund_event timer) {
    return On<CEventObject>(__func__, timer, [](CEventObject& object) { object.GetTimer().Start(); });
}

int32_t VORLUND_CALL vorlund_timer_stop(vorlund_event timer) {
    return On<CEventObject>(__func__, timer, [](CEventObject& object) { object.GetTimer().Stop(); });
}
