// What the program needs of the system around it.
#pragma once

#include <cstddef>
#include <string>

/// From now on a fault ends this process at once and silently.
void EndQuietly();

/// A time far beyond the limit of a scan ends this process.
void LimitTime();

/// From now on this process can take so many MiB more memory, where the system has such a limit; 0 for no
/// limit.
void LimitMemory(unsigned int megabytes);

/// From now on this process cannot do what IsolatedDecoder.h keeps from it. False when the system does not
/// offer that.
bool EnterSandbox();

/// Writes to the channel of that number; false when nobody reads.
bool Send(const std::string& channel, const void* bytes, std::size_t size);

/// Waits for `size` bytes from the channel; false when nobody writes them any more.
bool Receive(const std::string& channel, void* bytes, std::size_t size);

/// Ends the process with code 0 and without a word, also in the middle of something.
[[noreturn]] void EndNow();
