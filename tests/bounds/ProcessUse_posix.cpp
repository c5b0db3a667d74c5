#include "bounds/ProcessUse.h"

#include <sys/resource.h>

namespace vorlund::test {

TProcessUse GetProcessUse() {
    rusage use{};
    getrusage(RUSAGE_SELF, &use);
    const auto milliseconds = [](const timeval& time) {
        return static_cast<std::uint64_t>(time.tv_sec) * 1000 +
               static_cast<std::uint64_t>(time.tv_usec) / 1000;
    };
    // In kilobytes here.
    return {milliseconds(use.ru_utime) + milliseconds(use.ru_stime),
            static_cast<std::uint64_t>(use.ru_maxrss) * 1024};
}

} // namespace vorlund::test
