// The command-line program: one subcommand per job.
#include "Command.h"
#include "Diagnostics.h"
#include "Terminal.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/Version.h>
#include <vorlund/Vorlund.h>

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <new>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

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
    CLI::App app{"Decodes and makes media files with the Vorlund library.", "vorlund"};
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string("vorlund ") + vorlund::GetVersion().text,
                         "Print the version of the library and exit");
    // A word that begins with "/" is a path on every system.
    app.allow_windows_style_options(false);

    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "vorlund: " + std::string(error.what()) + "; --help tells the options\n";
    });

    std::vector<std::string> pluginPaths;
    app.add_option("--plugin-path", pluginPaths,
                   "Load the plug-ins of this folder too; may be given several times")
        ->allow_extra_args(false);
    TCommand command;
    AddDecodeCommand(app, command);
    AddPlasmaCommand(app, command);
    AddRandomCommand(app, command);
    AddWindowCommand(app, command);

    try {
        std::vector<std::string> arguments = GetArguments(argc, argv);
        // The parser takes the arguments last first.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kExitUsage;
    }
    library.Open(pluginPaths);
    command(diagnostics);
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
