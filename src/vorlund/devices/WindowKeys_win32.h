// Keys of Windows.
#pragma once

#include "vorlund/api/platform/WindowsLean.h"

namespace vorlund {

class CWindowEvents;

/// Tells of the key that `message` is about, if it is about one. To be called behind `TranslateMessage`.
///
/// \return the message with the key's character, taken out of the queue, where it may stand behind other
/// keys;
///         to be dispatched behind that of the key. Without a window there is none.
MSG TellKey(CWindowEvents& events, const MSG& message);

} // namespace vorlund
