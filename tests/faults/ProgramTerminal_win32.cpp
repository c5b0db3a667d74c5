// The terminal of the program under test: none.
#include "tools/vorlund/Terminal.h"

#include <fcntl.h>
#include <io.h>

void PrepareStandardStreams() {}

bool IsErrorTerminal() {
    return false;
}

std::FILE* GetBinaryOutput() {
    _setmode(_fileno(stdout), _O_BINARY);
    return stdout;
}
