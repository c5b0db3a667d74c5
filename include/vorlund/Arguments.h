/// \file
/// The command line of a program, in UTF-8 on every system.
#pragma once

#include <vorlund/Platform.h>

#include <string>
#include <vector>

namespace vorlund {

/// The arguments without the program's name, as `PathFromUtf8` (Path.h) takes them. On POSIX they are those
/// given, byte for byte; on Windows, whose `main` gets the ANSI code page, the system is asked for its own
/// command line, of which a lone surrogate becomes U+FFFD. Raises `std::bad_alloc`. Since version 0.1.
VRL_API std::vector<std::string> GetUtf8Arguments(int argc, const char* const* argv);

} // namespace vorlund
