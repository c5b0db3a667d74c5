#include "Terminal.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

void PrepareStandardStreams() {
    // Nothing to do: the runtime gives their numbers to no other file, and prints through the streams.
}

bool IsErrorTerminal() {
    return _isatty(_fileno(stderr)) != 0;
}

int GetErrorColumns() {
    CONSOLE_SCREEN_BUFFER_INFO info;
    return GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info)
               ? info.srWindow.Right - info.srWindow.Left + 1
               : 80;
}

std::FILE* GetBinaryInput() {
    _setmode(_fileno(stdin), _O_BINARY);
    return stdin;
}

std::FILE* GetBinaryOutput() {
    _setmode(_fileno(stdout), _O_BINARY);
    return stdout;
}
