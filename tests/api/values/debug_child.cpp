#include "api/values/debug_child.h"

#include <clocale>
#include <cstdio>
#include <cwchar>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

void Print(TDebugMessageType type, const wchar* text) {
    CDebug::PrintMessage(type, VRL_L("%s"), text);
}

/// Text that the streams may not be able to encode, and text behind it that must still come.
int PrintMixedText() {
    for (const TDebugMessageType type : {DEBUG_MESSAGE_STDOUT, DEBUG_MESSAGE_STDERR}) {
        Print(type, VRL_L("first"));
        Print(type, kMixedText);
        Print(type, VRL_L(""));
        Print(type, VRL_L("last"));
    }
    return 0;
}

int PrintBehindBytes() {
    std::printf("before ");
    Print(DEBUG_MESSAGE_STDOUT, kMixedText);
    std::printf("after\n");
    return 0;
}

int PrintBehindWideText() {
    std::fputws(L"before ", stdout);
    Print(DEBUG_MESSAGE_STDOUT, kMixedText);
    std::fputws(L"after\n", stdout);
    return 0;
}

/// The first print of all must leave the program its choice between bytes and wide text.
int PrintBeforeWideText() {
    Print(DEBUG_MESSAGE_STDOUT, kMixedText);
    if (std::fwide(stdout, 0) != 0) return 1;
    return std::fputws(L"after\n", stdout) < 0 ? 2 : 0;
}

int PrintAfterRestoring() {
    const TDebugHandler drop = [](TDebugMessageType, const wchar*, void*) {};
    for (const TDebugMessageType type : {DEBUG_MESSAGE_STDOUT, DEBUG_MESSAGE_STDERR}) {
        CDebug::SetHandler(type, drop);
        Print(type, VRL_L("dropped"));
        CDebug::SetHandler(type, nullptr);
        Print(type, VRL_L("printed"));
    }
    return 0;
}

/// Lines "0 xxx...", "1 xxx..." from several threads at once.
int PrintFromThreads() {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([number] {
            const wstring body(300, static_cast<wchar>('a' + number));
            for (int i = 0; i < 200; ++i) {
                CDebug::PrintMessage(DEBUG_MESSAGE_STDOUT, VRL_L("%d %s"), number, body.c_str());
                CDebug::PrintMessage(DEBUG_MESSAGE_STDERR, VRL_L("%d %s"), number, body.c_str());
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    return 0;
}

int PrintDebuggerOutput() {
    Print(DEBUG_MESSAGE_OUTPUT, VRL_L("plain 100%s"));
    Print(DEBUG_MESSAGE_OUTPUT, VRL_L(""));
    Print(DEBUG_MESSAGE_OUTPUT, VRL_L("caf\u00E9"));
    try {
        Raise<CFileAccessException>(kChildFailure);
    } catch (const CException&) {
        return 0;
    }
}

int RaiseBug() {
    try {
        Raise<CBugException>(kChildFailure);
    } catch (const CBugException&) {
        std::printf("raised\n");
        return 0;
    }
}

int BreakAndGoOn() {
    CDebug::Break();
    std::printf("went on\n");
    return 0;
}

int Run(const std::string& mode, const char* argument) {
    if (mode == "mixed") return PrintMixedText();
    if (mode == "mixed-in-locale") return std::setlocale(LC_ALL, argument) ? PrintMixedText() : kUnavailable;
    if (mode == "behind-bytes") return PrintBehindBytes();
    if (mode == "behind-wide") return PrintBehindWideText();
    if (mode == "before-wide") return PrintBeforeWideText();
    if (mode == "restored") return PrintAfterRestoring();
    if (mode == "threads") return PrintFromThreads();
    if (mode == "output") return PrintDebuggerOutput();
    if (mode == "bug") return RaiseBug();
    if (mode == "break") return BreakAndGoOn();
    return RunSystemMode(mode);
}

} // namespace
} // namespace vorlund::test

int main(int argc, char** argv) {
    return vorlund::test::Run(argc > 1 ? argv[1] : "", argc > 2 ? argv[2] : "");
}
