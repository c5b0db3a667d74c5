// What the program needs of the system around it.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

/// To be called before anything is opened or printed. A standard stream that the program was started without
/// stays unusable, instead of becoming the next file that is opened. What the standard output then refuses
/// marks the stream (`std::ferror`).
void PrepareStandardStreams();

/// The arguments without the program's name, in UTF-8 (on POSIX: as given).
std::vector<std::string> GetArguments(int argc, char** argv);

/// True when the standard error stream is a terminal.
bool IsErrorTerminal();

/// The standard output, switched to write bytes as they are.
std::FILE* GetBinaryOutput();
