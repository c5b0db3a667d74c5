#include "api/isolation/Wine.h"

namespace vorlund::test {

bool IsWine() {
    return false;
}

} // namespace vorlund::test
