#include "plugins/audio/Environment.h"

#include <cstdlib>

namespace vorlund::test {

void SetEnvironment(const std::string& name, const std::string& value) {
    if (value.empty()) {
        unsetenv(name.c_str());
    } else {
        setenv(name.c_str(), value.c_str(), 1);
    }
}

} // namespace vorlund::test
