// What the program needs of the system around it.
#pragma once

#include <cstddef>
#include <string>

/// From now on a fault ends this process at once and silently, and so does a time far beyond the limit of a
/// scan.
void EndQuietly();

/// Writes to the pipe of that number; false when nobody reads.
bool Send(const std::string& channel, const void* bytes, std::size_t size);

/// Ends the process with code 0 and without a word, also in the middle of something.
[[noreturn]] void EndNow();
