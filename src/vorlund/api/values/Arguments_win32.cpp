#include "vorlund/api/platform/WindowsLean.h"

#include <vorlund/Arguments.h>
#include <vorlund/Text.h>

#include <memory>
#include <type_traits>

namespace vorlund {
namespace {

using TSplit = LPWSTR*(WINAPI*)(LPCWSTR, int*);

struct TFreeLibrary {
    void operator()(HMODULE module) const { FreeLibrary(module); }
};
struct TFreeLocal {
    void operator()(LPWSTR* memory) const { LocalFree(memory); }
};

} // namespace

std::vector<std::string> GetUtf8Arguments(int argc, const char* const* argv) {
    // Loaded here, because it takes other libraries with it that nobody else needs.
    const std::unique_ptr<std::remove_pointer_t<HMODULE>, TFreeLibrary> shell(
        LoadLibraryExW(L"shell32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
    const auto split = shell ? reinterpret_cast<TSplit>(
                                   reinterpret_cast<void*>(GetProcAddress(shell.get(), "CommandLineToArgvW")))
                             : nullptr;
    int count = 0;
    const std::unique_ptr<LPWSTR, TFreeLocal> wide(split ? split(GetCommandLineW(), &count) : nullptr);
    std::vector<std::string> arguments;
    // Without the system's help the arguments are in the ANSI code page.
    if (!wide && argc > 1) return {argv + 1, argv + argc};
    for (int index = 1; index < count; ++index) arguments.push_back(TextToUtf8(wide.get()[index]));
    return arguments;
}

} // namespace vorlund
