#include "Terminal.h"

#include <unistd.h>

std::vector<std::string> GetArguments(int argc, char** argv) {
    return {argv + 1, argv + argc};
}

bool IsErrorTerminal() {
    return isatty(STDERR_FILENO) != 0;
}

std::FILE* GetBinaryOutput() {
    return stdout;
}
