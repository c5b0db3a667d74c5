/// \file
/// What a window's handler was told.
#pragma once

#include "devices/WindowProbe.h"

#include <vorlund/VideoWindow.h>
#include <vorlund/WindowEvents.h>

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

namespace vorlund::test {

/// Its address is the `user` of `CEventRecorder::OnEvent`. Any thread.
class CEventRecorder {
public:
    static void OnEvent(const TWindowEvent& event, void* user) {
        auto& self = *static_cast<CEventRecorder*>(user);
        const std::lock_guard lock(self.mutex_);
        self.events_.push_back(event);
        self.thread_ = std::this_thread::get_id();
    }

    std::vector<TWindowEvent> GetEvents() const {
        const std::lock_guard lock(mutex_);
        return events_;
    }
    /// Those of a type.
    std::vector<TWindowEvent> GetEvents(std::uint32_t type) const {
        std::vector<TWindowEvent> events = GetEvents();
        std::erase_if(events, [type](const TWindowEvent& event) { return event.type != type; });
        return events;
    }
    /// The keys that were pressed and released, each release with the highest bit set.
    std::vector<std::uint32_t> GetKeys() const {
        std::vector<std::uint32_t> keys;
        for (const TWindowEvent& event : GetEvents()) {
            if (event.type == WINDOW_EVENT_KEY_PRESSED) keys.push_back(event.key);
            if (event.type == WINDOW_EVENT_KEY_RELEASED) keys.push_back(event.key | kReleased);
        }
        return keys;
    }
    bool Has(std::uint32_t type) const { return !GetEvents(type).empty(); }
    bool HasSize(int width, int height) const {
        const auto sizes = GetEvents(WINDOW_EVENT_RESIZED);
        return !sizes.empty() && sizes.back().width == width && sizes.back().height == height;
    }
    void Clear() {
        const std::lock_guard lock(mutex_);
        events_.clear();
    }
    std::thread::id GetThread() const {
        const std::lock_guard lock(mutex_);
        return thread_;
    }

    static constexpr std::uint32_t kReleased = 0x80000000;

private:
    mutable std::mutex mutex_;
    std::vector<TWindowEvent> events_;
    std::thread::id thread_;
};

} // namespace vorlund::test
