/// \file
/// What this process holds of the system.
#pragma once

namespace vorlund::test {

/// Threads of this process.
int CountThreads();

/// Whether a hundred thousand threads, one after the other, take no more than some seconds.
bool AreThreadsCheap();

/// Handles of this process; 0 where the system has none.
int CountHandles();

} // namespace vorlund::test
