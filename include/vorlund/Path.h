/// \file
/// Paths between UTF-8, as programs get them from their arguments, and the UTF-16 of the library. Any thread.
#pragma once

#include <vorlund/Platform.h>

#include <string>

namespace vorlund {

/// The path in UTF-16. On POSIX a byte that is not valid UTF-8 becomes one unit U+DC80 to U+DCFF, and `\`,
/// which is part of a name there, U+DC5C, so that every file name can be opened. On Windows a byte that is
/// not valid becomes U+FFFD. Null gives the empty path.
VRL_API wstring PathFromUtf8(const char* path);

/// The path in UTF-8; on POSIX exactly the bytes that name the file, with `/` for each `\`. A lone surrogate
/// that represents no byte becomes U+FFFD. Null gives the empty path.
VRL_API std::string PathToUtf8(const wchar* path);

} // namespace vorlund
