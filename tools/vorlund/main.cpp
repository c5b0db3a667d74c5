// The command-line program: one subcommand per job.
#include "CommandLine.h"
#include "Diagnostics.h"
#include "Terminal.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>

#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <new>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

constexpr const vorlund::wchar* kOutOfMemory = VRL_L("Out of memory");

/// Where no exception can be raised any more because even that takes memory, the program still ends with a
/// line, at every moment. Everything else is a fault of the program, which ends as such.
[[noreturn]] void EndAbruptly() {
    const std::type_info* const type = abi::__cxa_current_exception_type();
    if (type && *type != typeid(std::bad_alloc) && *type != typeid(vorlund::COutOfMemoryException))
        std::abort();
    std::fputs("vorlund: Out of memory\n", stderr);
    std::_Exit(kExitFailed);
}

struct TAbruptEnd {
    TAbruptEnd() { std::set_terminate(&EndAbruptly); }
};

/// Before all other objects, some of which take memory before `main` begins.
[[gnu::init_priority(101)]] const TAbruptEnd abruptEnd;

/// The library. On every way out, whatever was opened is closed.
class CLibrary {
public:
    CLibrary() = default;
    CLibrary(const CLibrary&) = delete;
    CLibrary& operator=(const CLibrary&) = delete;
    ~CLibrary() { vorlund::v.Abandon(); }

    /// Opens it with the plug-ins of more folders (UTF-8).
    void Open(const std::vector<std::string>& pluginPaths) {
        for (const std::string& path : pluginPaths)
            vorlund::v.GetPluginStore().AddPluginPath(vorlund::PathFromUtf8(path.c_str()).c_str());
        vorlund::v.Init();
    }

    /// Raises what a plug-in raises that cannot be closed.
    void Close() { vorlund::v.Close(); }
};

/// Calls `act`; a failure becomes one line and an exit code.
template <class TAct> int Report(const CDiagnostics& diagnostics, TAct act) {
    try {
        return act();
    } catch (const TProgramError& error) {
        diagnostics.PrintError(error.text.c_str());
    } catch (const vorlund::CException& error) {
        diagnostics.PrintError(error.GetReason());
    } catch (const std::bad_alloc&) {
        diagnostics.PrintError(kOutOfMemory);
    } catch (const std::exception& error) {
        const std::string text = error.what();
        diagnostics.PrintError(vorlund::wstring(text.begin(), text.end()).c_str());
    }
    // What the failure has left locked must not be in the way of other threads until the end.
    vorlund::v.GiveBackLocks();
    return kExitFailed;
}

int Run(int argc, char** argv, CDiagnostics& diagnostics, CLibrary& library) {
    const TCommandLine line = ReadCommandLine(GetArguments(argc, argv));
    if (!line.command) return line.exitCode;
    library.Open(line.pluginPaths);
    line.command(diagnostics);
    library.Close();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    CDiagnostics diagnostics;
    // It ends after the report, because what is reported may lie in a plug-in.
    CLibrary library;
    return Report(diagnostics, [&] { return Run(argc, argv, diagnostics, library); });
}
