/// \file
/// Reading that fails in the middle of a file: the library's calls of the C runtime go through a function of
/// the tests.
#pragma once

#include <cstdint>

namespace vorlund::test {

/// Reads of the library get nothing from byte `limit` of a file on: an error of the device when `isError`,
/// else the end of the file. False when the library does not read by the function that is replaced. One
/// thread at a time.
bool LimitReads(std::int64_t limit, bool isError);

/// Ends that.
void UnlimitReads();

} // namespace vorlund::test
