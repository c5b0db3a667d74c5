// What of this layer ends with the library: first the timers, then the asynchronous waits, both after `v`.
//
// Objects of one file are destroyed in the reverse of their order, but files have no order among themselves,
// so these two ask for a place before all objects without one. They are constant-initialised like everything
// below `v`; only their destruction is arranged when the library is loaded.
#include "vorlund/system/AsyncWaits.h"
#include "vorlund/system/TimerPool.h"

namespace vorlund {
namespace {

struct TAsyncWaitsEnd {
    constexpr TAsyncWaitsEnd() = default;
    ~TAsyncWaitsEnd() { asyncWaits.End(); }
};

[[gnu::init_priority(1000)]] constinit TAsyncWaitsEnd asyncWaitsEnd;

} // namespace

[[gnu::init_priority(1001)]] constinit CTimerPool timerPool;

} // namespace vorlund
