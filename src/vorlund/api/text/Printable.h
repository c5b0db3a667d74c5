// Text of others, which may hold anything.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund {

/// The text for people: what would control a terminal, or is half a character, becomes "?".
wstring MakePrintable(wstring text);

} // namespace vorlund
