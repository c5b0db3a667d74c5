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

int Run(const TCommandLine& line) {
    CDiagnostics diagnostics;
    try {
        const CLibrary library(line.pluginPaths);
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
