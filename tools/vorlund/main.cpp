// The command-line program: one subcommand per job.
#include "Command.h"
#include "Diagnostics.h"
#include "Terminal.h"

#include <vorlund/Exception.h>
#include <vorlund/Vorlund.h>

#include <CLI/CLI.hpp>

#include <new>
#include <string>

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

/// Closes the library on every way out.
class CLibrary {
public:
    CLibrary() { vorlund::v.Init(); }
    CLibrary(const CLibrary&) = delete;
    CLibrary& operator=(const CLibrary&) = delete;
    ~CLibrary() { vorlund::v.Close(); }
};

int Run(const TCommand& command) {
    CDiagnostics diagnostics;
    try {
        const CLibrary library;
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

} // namespace

int main(int argc, char** argv) {
    CLI::App app{"Decodes and makes media files with the Vorlund library.", "vorlund"};
    app.require_subcommand(1);
    // A word that begins with "/" is a path on every system.
    app.allow_windows_style_options(false);

    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "vorlund: " + std::string(error.what()) + "; --help tells the options\n";
    });

    TCommand command;
    AddDecodeCommand(app, command);
    AddPlasmaCommand(app, command);
    AddRandomCommand(app, command);

    try {
        std::vector<std::string> arguments = GetArguments(argc, argv);
        // The parser takes the arguments last first.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kExitUsage;
    }
    return Run(command);
}
