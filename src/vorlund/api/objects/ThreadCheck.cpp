// The check for objects that several threads count; see ObjectServices.h.
#include "vorlund/system/Thread.h"

#include <vorlund/Debug.h>
#include <vorlund/ObjectServices.h>

namespace vorlund::services {

unsigned int ThreadNumber() {
    return CurrentThreadId();
}

void OnCount(std::atomic<unsigned int>& thread, int references, int number, const CId& classId) {
    const unsigned int now = CurrentThreadId();
    const unsigned int before = thread.exchange(now, std::memory_order_relaxed);
    if (before == now || references <= 1) return;
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT,
                         VRL_L("Object %d of class %s with %d references: counted by thread %u, before by "
                               "thread %u"),
                         number, classId.ToString().c_str(), references, now, before);
}

} // namespace vorlund::services
