// Where the program under test gets its arguments from: its own caller, not the command line of this process.
#include "tools/vorlund/Terminal.h"

#include <fcntl.h>
#include <io.h>

void PrepareStandardStreams() {}

std::vector<std::string> GetArguments(int argc, char** argv) {
    return {argv + 1, argv + argc};
}

bool IsErrorTerminal() {
    return false;
}

std::FILE* GetBinaryOutput() {
    _setmode(_fileno(stdout), _O_BINARY);
    return stdout;
}
