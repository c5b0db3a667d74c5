/// \file
/// Reasons that name a path.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund {

/// Formats `path` into `format` (one `%s`), cut at 255 units, and returns the text: the process's one buffer
/// for such reasons, which the next call overwrites. `path` may point into that buffer. Any thread; threads
/// that fail at the same time may see each other's text.
///
///     Raise<CFileAccessException>(kCannotFind, PathReason(kCannotFind.reason, path));
const wchar* PathReason(const wchar* format, const wchar* path);

} // namespace vorlund
