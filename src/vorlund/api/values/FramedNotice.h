/// \file
/// A message box drawn with characters, for systems that show their boxes on a terminal.
#pragma once

#include <vorlund/Platform.h>

#include <memory_resource>
#include <string>

namespace vorlund {

/// Appends `text` in a frame headed by `caption`, wrapped at blanks to fit `columns` (at least 24 are used,
/// at most 78), in UTF-8 with "\r\n" line ends, which are right whatever mode the terminal is in. With
/// `hasButton` the last row says that Enter closes the box. Control characters in the text, which could
/// command the terminal, become "?"; its line feeds begin new rows. Raises `std::bad_alloc`.
void AppendFramedNotice(std::pmr::string& out, const wchar* caption, const wchar* text, int columns,
                        bool hasButton);

} // namespace vorlund
