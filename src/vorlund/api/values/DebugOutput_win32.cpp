#include "vorlund/api/values/DebugOutput.h"

#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/api/text/StackArena.h"

#include <cstddef>
#include <cstdio>
#include <cwchar>
#include <io.h>
#include <locale.h>

namespace vorlund::debugoutput {
namespace {

/// The code page of what is written to `stream`. In the initial locale of the C runtime that is the system's
/// own, 0.
unsigned int CodePageOf(std::FILE* stream) {
    return _isatty(_fileno(stream)) ? GetConsoleOutputCP() : ___lc_codepage_func();
}

/// One call of the C runtime for text and line end, so that lines of several threads stay whole. Not the
/// stream's wide functions: in the initial locale they fail at the first unit beyond Latin-1.
void WriteLine(std::FILE* stream, const wchar* text) {
    const unsigned int codePage = CodePageOf(stream);
    const int length = static_cast<int>(std::wcslen(text));
    const int size = WideCharToMultiByte(codePage, 0, text, length, nullptr, 0, nullptr, nullptr);
    CStackArena arena;
    std::pmr::string line = ReserveString(arena, static_cast<std::size_t>(size) + 1);
    line.resize(static_cast<std::size_t>(size));
    WideCharToMultiByte(codePage, 0, text, length, line.data(), size, nullptr, nullptr);
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stream);
    std::fflush(stream);
}

} // namespace

void WriteToDebugger(const wchar* text) {
    OutputDebugStringW(text);
    OutputDebugStringW(L"\n");
}

void ShowBox(const wchar* text) {
    MessageBoxW(nullptr, text, L"Vorlund message", MB_OK | MB_ICONINFORMATION);
}

void WriteToStandardOutput(const wchar* text) {
    WriteLine(stdout, text);
}

void WriteToStandardError(const wchar* text) {
    WriteLine(stderr, text);
}

void BreakIntoDebugger() {
    DebugBreak();
}

} // namespace vorlund::debugoutput
