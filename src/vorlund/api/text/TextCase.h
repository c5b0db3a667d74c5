/// \file
/// Upper-casing of single UTF-16 units, the same on every system.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund {

/// The upper-case form of a unit by Unicode's simple mapping, one unit to one; a unit without one, surrogates
/// included, is its own. The C runtimes' wide upper-casing knows only ASCII in their initial locale on one
/// system and more on another, so texts would be in another order on each.
wchar UpperCaseUnit(wchar unit);

} // namespace vorlund
