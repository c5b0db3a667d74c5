// The command-line program: one subcommand per job.
#include "CommandLine.h"
#include "Diagnostics.h"
#include "Terminal.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>

#include <new>
#include <string>

namespace {

/// Tells which plug-ins a scan has left out.
void PrintLeftOutPlugins() {
    const vorlund::CPluginStore& store = vorlund::v.GetPluginStore();
    for (unsigned int i = 0; i < store.GetReportCount(); ++i) {
        const vorlund::TPluginReport report = store.GetReport(i);
        if (report.outcome >= vorlund::PLUGIN_SCAN_NO_HELPER &&
            report.outcome <= vorlund::PLUGIN_SCAN_GARBLED)
            vorlund::CDebug::PrintMessage(vorlund::DEBUG_MESSAGE_STDERR,
                                          VRL_L("vorlund: plug-in '%s' is left out: %s"),
                                          report.path.GetBuffer(), report.reason);
    }
}

/// Opens the library with the plug-ins of more folders (UTF-8), and closes it on every way out.
class CLibrary {
public:
    explicit CLibrary(const TCommandLine& line) {
        vorlund::CPluginStore& store = vorlund::v.GetPluginStore();
        for (const std::string& path : line.pluginPaths)
            store.AddPluginPath(vorlund::PathFromUtf8(path.c_str()).c_str());
        if (line.arePluginsScanned) store.SetScanMode(vorlund::PLUGIN_SCAN_CHILD);
        vorlund::v.Init();
    }
    CLibrary(const CLibrary&) = delete;
    CLibrary& operator=(const CLibrary&) = delete;
    ~CLibrary() { vorlund::v.Close(); }
};

int Run(const TCommandLine& line) {
    CDiagnostics diagnostics;
    try {
        const CLibrary library(line);
        PrintLeftOutPlugins();
        line.command(diagnostics);
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
    const TCommandLine line = ReadCommandLine(GetArguments(argc, argv));
    return line.command ? Run(line) : line.exitCode;
}
