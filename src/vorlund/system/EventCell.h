// What a CEvent holds.
#pragma once

#include "vorlund/system/Waiting.h"

#include <vorlund/Event.h>

#include <atomic>

namespace vorlund {

/// Apart from the object, whose layout belongs to the applications. Atomic, because a thread that waits when
/// the object is assigned to has read the handle at some time before.
struct CEvent::TCell {
    explicit TCell(waiting::TEventHandle first) : handle(first) {}

    waiting::TEventHandle Get() const { return handle.load(std::memory_order_acquire); }

    std::atomic<waiting::TEventHandle> handle;
};

/// The way from an object to its platform event.
struct TEventAccess {
    /// Null stands for no event, with which no wait succeeds.
    static waiting::TEventHandle HandleOf(const CEvent* event) {
        return event ? event->cell_->Get() : nullptr;
    }
};

} // namespace vorlund
