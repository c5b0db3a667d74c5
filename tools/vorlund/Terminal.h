// What the program needs of the system around it.
#pragma once

#include <cstdio>

/// To be called before anything is opened or printed. A standard stream that the program was started without
/// stays unusable, instead of becoming the next file that is opened. What the standard output then refuses
/// marks the stream (`std::ferror`).
void PrepareStandardStreams();

/// True when the standard error stream is a terminal.
bool IsErrorTerminal();

/// Characters in a line of that terminal; 80 when it does not say.
int GetErrorColumns();

/// The standard input, switched to read bytes as they are.
std::FILE* GetBinaryInput();

/// The standard output, switched to write bytes as they are.
std::FILE* GetBinaryOutput();
