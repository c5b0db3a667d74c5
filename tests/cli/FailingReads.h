/// \file
/// Runs of the program in which a file cannot be read to its end.
#pragma once

#include "support/ChildProcess.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vorlund::test {

/// The one file that cannot be read: where the system can tell files apart, the others can.
inline constexpr const char* kUnreadableName = "unreadable.wav";

/// Runs the program. It gets nothing from byte `limit` of the file on: an error of the device when `isError`,
/// else the end of a file that has become shorter than it was.
TChildEnd RunWithFailingReads(std::vector<std::string> arguments, std::int64_t limit, bool isError);

} // namespace vorlund::test
