#include "bounds/ProcessUse.h"

#include <sys/resource.h>

#include <fstream>
#include <string>

namespace vorlund::test {
namespace {

/// The peak of this program's own memory. That of `getrusage` begins with what the parent had when it forked.
std::uint64_t GetPeakBytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::uint64_t kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes) return kilobytes * 1024;
    }
    return ~std::uint64_t{0};
}

} // namespace

TProcessUse GetProcessUse() {
    rusage use{};
    getrusage(RUSAGE_SELF, &use);
    const auto milliseconds = [](const timeval& time) {
        return static_cast<std::uint64_t>(time.tv_sec) * 1000 +
               static_cast<std::uint64_t>(time.tv_usec) / 1000;
    };
    return {milliseconds(use.ru_utime) + milliseconds(use.ru_stime), GetPeakBytes()};
}

} // namespace vorlund::test
