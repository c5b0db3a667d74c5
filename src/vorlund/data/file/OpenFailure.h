// What `GetOpenFailure` (StreamErrors.h) tells.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund {

/// Notes why the opening of `path` that has just failed in this thread failed; before anything else is asked
/// of the file system.
void NoteOpenFailure(const wchar* path);

} // namespace vorlund
