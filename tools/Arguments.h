// The command line of a program, for all programs.
#pragma once

#include <string>
#include <vector>

/// The arguments without the program's name, in UTF-8 (on POSIX: as given).
std::vector<std::string> GetArguments(int argc, char** argv);
