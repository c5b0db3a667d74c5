#include "faults/ProcessHandles.h"

#include <filesystem>
#include <iterator>

#include <unistd.h>

namespace vorlund::faults {

int CountOpenHandles() {
    return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                                          std::filesystem::directory_iterator()));
}

std::FILE* SplitReport(const std::string& path) {
    std::FILE* const former = fdopen(dup(STDOUT_FILENO), "w");
    if (!std::freopen(path.c_str(), "w", stdout)) return nullptr;
    return former;
}

} // namespace vorlund::faults
