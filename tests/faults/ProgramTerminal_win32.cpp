// The terminal of the program under test: none.
#include "tools/vorlund/Terminal.h"

#include <fcntl.h>
#include <io.h>

void PrepareStandardStreams() {}

bool IsErrorTerminal() {
    return false;
}

int GetErrorColumns() {
    return 80;
}

std::FILE* GetBinaryInput() {
    _setmode(_fileno(stdin), _O_BINARY);
    return stdin;
}

std::FILE* GetBinaryOutput() {
    _setmode(_fileno(stdout), _O_BINARY);
    return stdout;
}
