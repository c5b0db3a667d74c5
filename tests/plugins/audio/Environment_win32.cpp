#include "plugins/audio/Environment.h"

#include <cstdlib>

namespace vorlund::test {

void SetEnvironment(const std::string& name, const std::string& value) {
    // In the copy of the C runtime, which SDL shares, and in the system's.
    _putenv((name + '=' + value).c_str());
}

} // namespace vorlund::test
