/// \file
/// Sees what the calling thread does that a thread of a sound system must not: asking for memory, giving it
/// back, and whatever may wait for another thread.
#pragma once

namespace vorlund::test {

/// What was seen since the construction. One at a time per thread.
class CRealtimeWatch {
public:
    CRealtimeWatch();
    CRealtimeWatch(const CRealtimeWatch&) = delete;
    CRealtimeWatch& operator=(const CRealtimeWatch&) = delete;
    ~CRealtimeWatch();

    /// Calls of the functions of memory.
    int GetMemoryCalls() const;
    /// Locks that were taken, and waits.
    int GetWaits() const;
};

} // namespace vorlund::test
