#include "Arguments.h"

#include <vorlund/Path.h>

#include <windows.h>
// After windows.h, which it needs.
#include <shellapi.h>

std::vector<std::string> GetArguments(int, char**) {
    // The narrow arguments are in the ANSI code page, which lacks most characters.
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(vorlund::PathToUtf8(wide[i]));
    LocalFree(wide);
    return arguments;
}
