#include "Terminal.h"

#include <vorlund/Path.h>

#include <fcntl.h>
#include <io.h>
#include <windows.h>
// After windows.h, which it needs.
#include <shellapi.h>

void PrepareStandardStreams() {
    // Nothing to do: the runtime gives their numbers to no other file, and prints through the streams.
}

std::vector<std::string> GetArguments(int, char**) {
    // The narrow arguments are in the ANSI code page, which lacks most characters.
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(vorlund::PathToUtf8(wide[i]));
    LocalFree(wide);
    return arguments;
}

bool IsErrorTerminal() {
    return _isatty(_fileno(stderr)) != 0;
}

std::FILE* GetBinaryOutput() {
    _setmode(_fileno(stdout), _O_BINARY);
    return stdout;
}
