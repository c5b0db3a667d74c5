#pragma once

#include <cstdlib>

namespace vorlund::test {

/// How many times as long a program may take under the emulator.
constexpr int kEmulatorTimeFactor = 10;

/// Whether an emulator runs this program, as scripts/target.sh tells in the environment: every instruction
/// takes several times as long, and some of the system's answers are the emulator's.
inline bool IsEmulated() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing sets this variable.
    return std::getenv("VORLUND_EMULATOR") != nullptr;
}

} // namespace vorlund::test
