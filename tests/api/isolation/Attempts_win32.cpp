#include "api/isolation/Attempts.h"

namespace vorlund::test {

std::string AttemptWhatIsForbidden() {
    return {};
}

} // namespace vorlund::test
