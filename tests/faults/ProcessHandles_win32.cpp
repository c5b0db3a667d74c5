#include "faults/ProcessHandles.h"

#include "system/ProcessResources.h"

#include <io.h>

namespace vorlund::faults {

int CountOpenHandles() {
    return test::CountHandles();
}

std::FILE* SplitReport(const std::string& path) {
    std::FILE* const former = _fdopen(_dup(_fileno(stdout)), "w");
    if (!std::freopen(path.c_str(), "w", stdout)) return nullptr;
    return former;
}

} // namespace vorlund::faults
