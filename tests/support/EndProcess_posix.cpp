#include "support/EndProcess.h"

#include <unistd.h>

namespace vorlund::test {

void EndProcess(int code) {
    _exit(code);
}

} // namespace vorlund::test
