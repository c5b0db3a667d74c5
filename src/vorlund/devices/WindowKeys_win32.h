// Keys of Windows.
#pragma once

#include "vorlund/api/platform/WindowsLean.h"

namespace vorlund {

class CWindowEvents;

/// Tells of the key that `message` is about, if it is about one. To be called behind `TranslateMessage` and
/// before the next message is taken.
void TellKeys(CWindowEvents& events, const MSG& message);

} // namespace vorlund
