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
#include <iostream>
#include <new>
#include <string>

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

/// Opens the library with the plug-ins of more folders (UTF-8), and closes it on every way out.
class CLibrary {
public:
    explicit CLibrary(const std::vector<std::string>& pluginPaths) {
        for (const std::string& path : pluginPaths)
            vorlund::v.GetPluginStore().AddPluginPath(vorlund::PathFromUtf8(path.c_str()).c_str());
        vorlund::v.Init();
    }
    CLibrary(const CLibrary&) = delete;
    CLibrary& operator=(const CLibrary&) = delete;
    ~CLibrary() { vorlund::v.Close(); }
};

int Run(const TCommand& command, const std::vector<std::string>& pluginPaths) {
    CDiagnostics diagnostics;
    try {
        const CLibrary library(pluginPaths);
        command(diagnostics);
        return 0;
    } catch (const TProgramError& error) {
        diagnostics.PrintError(error.text.c_str());
    } catch (const vorlund::CException& error) {
        diagnostics.PrintError(error.GetReason());
    } catch (const std::bad_alloc&) {
        diagnostics.PrintError(VRL_L("Out of memory"));
    }
    return kExitFailed;
}

/// The exit code of a program that is done: what was printed counts when the system has taken it.
int CheckOutput() {
    std::cout.flush();
    if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return 0;
    CDiagnostics().PrintError(VRL_L("Cannot write to the standard output"));
    return kExitFailed;
}

} // namespace

int main(int argc, char** argv) {
    PrepareStandardStreams();
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
        return app.exit(error) == 0 ? CheckOutput() : kExitUsage;
    }
    const int code = Run(command, pluginPaths);
    return code == 0 ? CheckOutput() : code;
}
