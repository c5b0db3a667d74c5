#pragma once

#include <cstdlib>

namespace vorlund::test {

/// Whether an emulator runs this program, as scripts/target.sh tells in the environment: every instruction
/// takes several times as long, and some of the system's answers are the emulator's.
inline bool IsEmulated() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing sets this variable.
    return std::getenv("VORLUND_EMULATOR") != nullptr;
}

} // namespace vorlund::test
