// The command-line program: one subcommand per job.
#include "Command.h"
#include "Diagnostics.h"
#include "Terminal.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/Version.h>
#include <vorlund/Vorlund.h>

#include <CLI/CLI.hpp>

#include <new>
#include <string>

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

struct TPluginOptions {
    /// Folders in UTF-8.
    std::vector<std::string> paths;
    bool isScanned = false;
};

/// Tells which plug-ins a scan has left out.
void PrintLeftOutPlugins() {
    const vorlund::CPluginStore& store = vorlund::v.GetPluginStore();
    for (unsigned int i = 0; i < store.GetReportCount(); ++i) {
        const vorlund::TPluginReport report = store.GetReport(i);
        if (report.outcome >= vorlund::PLUGIN_SCAN_NO_HELPER && report.outcome <= vorlund::PLUGIN_SCAN_GARBLED)
            vorlund::CDebug::PrintMessage(vorlund::DEBUG_MESSAGE_STDERR, VRL_L("vorlund: plug-in '%s' is left out: %s"),
                                          report.path.GetBuffer(), report.reason);
    }
}

/// Opens the library with the plug-ins of more folders (UTF-8), and closes it on every way out.
class CLibrary {
public:
    explicit CLibrary(const TPluginOptions& plugins) {
        vorlund::CPluginStore& store = vorlund::v.GetPluginStore();
        for (const std::string& path : plugins.paths)
            store.AddPluginPath(vorlund::PathFromUtf8(path.c_str()).c_str());
        if (plugins.isScanned) store.SetScanMode(vorlund::PLUGIN_SCAN_CHILD);
        vorlund::v.Init();
    }
    CLibrary(const CLibrary&) = delete;
    CLibrary& operator=(const CLibrary&) = delete;
    ~CLibrary() { vorlund::v.Close(); }
};

int Run(const TCommand& command, const TPluginOptions& plugins) {
    CDiagnostics diagnostics;
    try {
        const CLibrary library(plugins);
        PrintLeftOutPlugins();
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
    app.set_version_flag("--version", std::string("vorlund ") + vorlund::GetVersion().text,
                         "Print the version of the library and exit");
    // A word that begins with "/" is a path on every system.
    app.allow_windows_style_options(false);

    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "vorlund: " + std::string(error.what()) + "; --help tells the options\n";
    });

    TPluginOptions plugins;
    app.add_option("--plugin-path", plugins.paths,
                   "Load the plug-ins of this folder too; may be given several times")
        ->allow_extra_args(false);
    app.add_flag("--scan-plugins", plugins.isScanned,
                 "Try each plug-in in a process of its own first, and leave out those that end it");
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
    return Run(command, plugins);
}
