// What a CEvent holds.
#pragma once

#include "vorlund/system/Waiting.h"

#include <vorlund/Event.h>

namespace vorlund {

/// Apart from the object, whose layout belongs to the applications.
struct CEvent::TCell {
    waiting::TEventHandle handle;
};

/// The way from an object to its platform event.
struct TEventAccess {
    /// Null stands for no event, with which no wait succeeds.
    static waiting::TEventHandle HandleOf(const CEvent* event) {
        return event ? event->cell_->handle : nullptr;
    }
};

} // namespace vorlund
