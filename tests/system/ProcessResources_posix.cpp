#include "system/ProcessResources.h"

#include <filesystem>
#include <iterator>

namespace vorlund::test {

int CountThreads() {
    return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                                          std::filesystem::directory_iterator()));
}

bool AreThreadsCheap() {
    return true;
}

int CountHandles() {
    return 0;
}

} // namespace vorlund::test
