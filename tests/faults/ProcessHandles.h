/// \file
/// What this process holds open, and where its output goes.
#pragma once

#include <cstdio>
#include <string>

namespace vorlund::faults {

/// Descriptors or handles of this process.
int CountOpenHandles();

/// Sends the standard output of this process to a file, and gives what it was before.
std::FILE* SplitReport(const std::string& path);

} // namespace vorlund::faults
