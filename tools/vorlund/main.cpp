// The command-line program: one subcommand per job.
#include "Arguments.h"
#include "CommandLine.h"
#include "Decoding.h"
#include "Diagnostics.h"
#include "Folders.h"
#include "Keyboard.h"
#include "OpenCauses.h"
#include "PluginTexts.h"
#include "Terminal.h"

#include <vorlund/Exception.h>
#include <vorlund/Vorlund.h>

#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <iostream>
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
    RestoreTerminal();
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

    /// Opens it with the plug-ins that the command line asks for.
    void Open(const TCommandLine& line) {
        vorlund::CPluginStore& store = vorlund::v.GetPluginStore();
        if (line.areFoldersForgotten)
            store.ClearPluginPaths();
        else
            vorlund::AddInstalledPlugins();
        for (const std::string& path : line.pluginPaths) AddPluginFolder(path);
        if (line.areDecodersIsolated) {
            IsolateDecoders(line.pluginPaths, line.areFoldersForgotten);
            // Nothing is loaded here but the devices of a window.
            store.ClearPluginPaths();
            if (line.needsDevices) vorlund::AddInstalledPlugins();
        }
        if (line.arePluginsScanned) store.SetScanMode(vorlund::PLUGIN_SCAN_CHILD);
        store.SetFailureMode(vorlund::PLUGIN_FAILURE_REPORTED);
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
    } catch (const vorlund::CFileAccessException& error) {
        diagnostics.PrintError((vorlund::wstring(error.GetReason()) + DescribeCause(error)).c_str());
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
    library.Open(line);
    if (!line.isListing) PrintLeftOutPlugins();
    line.command(diagnostics);
    library.Close();
    return 0;
}

/// The exit code of a program that is done: what was printed counts when the system has taken it.
int CheckOutput(const CDiagnostics& diagnostics) {
    std::cout.flush();
    if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return 0;
    diagnostics.PrintError(VRL_L("Cannot write to the standard output"));
    return kExitFailed;
}

} // namespace

int main(int argc, char** argv) {
    PrepareStandardStreams();
    CDiagnostics diagnostics;
    // It ends after the report, because what is reported may lie in a plug-in.
    CLibrary library;
    const int code = Report(diagnostics, [&] { return Run(argc, argv, diagnostics, library); });
    return code == 0 ? CheckOutput(diagnostics) : code;
}
