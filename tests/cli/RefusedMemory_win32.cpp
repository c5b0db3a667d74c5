#include "cli/RefusedMemory.h"

#include <cstdlib>

namespace vorlund::test {

int GetLastOfEveryRefusal() {
    return 16;
}

// The same program, which is linked with refuse_allocations_win32.cpp.
TChildEnd RunWithRefusedMemory(std::vector<std::string> arguments, int number, bool isOnce) {
    _putenv_s("VORLUND_TEST_REFUSE", std::to_string(number).c_str());
    _putenv_s("VORLUND_TEST_REFUSE_ONCE", isOnce ? "1" : "");
    TChildEnd end = RunChild("refused_program", {.arguments = std::move(arguments)});
    for (const char* const name : {"VORLUND_TEST_REFUSE", "VORLUND_TEST_REFUSE_ONCE"}) _putenv_s(name, "");
    std::erase(end.errors, '\r');
    return end;
}

} // namespace vorlund::test
