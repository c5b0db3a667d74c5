#include "cli/RefusedMemory.h"

#include "support/Emulated.h"

#include <cstdlib>

namespace vorlund::test {

int GetLastOfEveryRefusal() {
    // Behind them are those of the plug-ins, one like the other.
    return IsEmulated() ? 16 : 1500;
}

// refuse_allocations_linux.cpp comes in front of the C library's functions.
TChildEnd RunWithRefusedMemory(std::vector<std::string> arguments, int number, bool isOnce) {
    // NOLINTBEGIN(concurrency-mt-unsafe): no other thread of the tests reads the environment.
    setenv("LD_PRELOAD", BesideProgram("refuse_allocations.so").c_str(), 1);
    setenv("VORLUND_TEST_REFUSE", std::to_string(number).c_str(), 1);
    if (isOnce) setenv("VORLUND_TEST_REFUSE_ONCE", "1", 1);
    TChildEnd end = RunChild("vorlund", {.arguments = std::move(arguments)});
    for (const char* const name : {"LD_PRELOAD", "VORLUND_TEST_REFUSE", "VORLUND_TEST_REFUSE_ONCE"})
        unsetenv(name);
    // NOLINTEND(concurrency-mt-unsafe)
    return end;
}

} // namespace vorlund::test
