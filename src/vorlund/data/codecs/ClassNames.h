// The names of classes, for people.
#pragma once

#include <vorlund/Id.h>
#include <vorlund/String.h>

namespace vorlund {

/// The registered name of the class; the text form of its identifier when the class store does not know it.
CString GetClassName(const CId& classId);

} // namespace vorlund
