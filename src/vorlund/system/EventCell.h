// What a CEvent holds.
#pragma once

#include "vorlund/api/values/ClassMemory.h"
#include "vorlund/system/Waiting.h"

#include <vorlund/Event.h>

#include <atomic>

namespace vorlund {

/// Not in the object itself, whose layout is fixed for applications. Atomic, because one thread may read the
/// handle to wait for it while another assigns to the object.
struct CEvent::TCell : TClassMemory {
    explicit TCell(waiting::TEventHandle first) : handle(first) {}

    waiting::TEventHandle Get() const { return handle.load(std::memory_order_acquire); }

    std::atomic<waiting::TEventHandle> handle;
};

/// Gives the library access to an object's platform event.
struct TEventAccess {
    /// For a null object, the null handle, with which no wait succeeds.
    static waiting::TEventHandle HandleOf(const CEvent* event) {
        return event ? event->cell_->Get() : nullptr;
    }
};

} // namespace vorlund
