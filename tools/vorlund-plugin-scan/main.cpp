// Does for the library, which starts it, what may end the process that does it. Not for people.
//
//   vorlund-plugin-scan CHANNEL FILE
// Tries one plug-in (`CPluginStore::SetScanMode`): opens the library without any other plug-in, loads and
// initialises the file, closes and unloads it, and tells the process that started it how far it came.
//
//   vorlund-plugin-scan CHANNEL --decode MEGABYTES [FOLDER...]
// Decodes one stream with the plug-ins of those folders and at most so much memory (`DecodeIsolated`).
#include "Arguments.h"
#include "DecodeSide.h"
#include "ScanSide.h"

#include "vorlund/api/plugins/ScanProtocol.h"

#include <vorlund/Debug.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

using namespace vorlund;
using namespace vorlund::pluginscan;

namespace {

constexpr int kExitUsage = 64;
constexpr int kExitUnheard = 1;

/// Nobody is there to read, and a box would wait for somebody.
void SilenceMessages() {
    for (const TDebugMessageType type :
         {DEBUG_MESSAGE_OUTPUT, DEBUG_MESSAGE_BOX, DEBUG_MESSAGE_STDOUT, DEBUG_MESSAGE_STDERR})
        CDebug::SetHandler(type, [](TDebugMessageType, const wchar*, void*) {});
}

/// As much of the text as there is room for.
template <std::size_t kRoom> void Put(const CString& text, char16_t (&field)[kRoom]) {
    std::copy_n(text.GetBuffer(), std::min<std::size_t>(text.Length(), kRoom - 1), field);
}

TMessage MakeMessage(TStage stage, const TPluginReport& report = {}) {
    TMessage message = {};
    message.mark = kMark;
    message.size = sizeof(message);
    message.stage = stage;
    message.outcome = report.outcome;
    message.code = report.code;
    message.exceptionType = report.exceptionType;
    Put(report.exceptionMethod, message.exceptionMethod);
    Put(report.detail, message.detail);
    return message;
}

int Run(const std::string& channel, const char* file) {
    bool isHeard = true;
    const auto tell = [&](const TMessage& message) {
        isHeard = Send(channel, &message, sizeof(message)) && isHeard;
    };
    tell(MakeMessage(TStage::Loading));
    CPluginStore& store = v.GetPluginStore();
    store.ClearPluginPaths();
    store.SetFailureMode(PLUGIN_FAILURE_REPORTED);
    bool isClosing = false;
    TPluginReport report;
    try {
        v.Init();
        const TPluginOutcome outcome = store.LoadPluginFile(PathFromUtf8(file).c_str());
        report = store.GetReport(0);
        report.outcome = outcome;
        tell(MakeMessage(TStage::Closing));
        isClosing = true;
        // What has raised is in no state to be closed.
        if (report.outcome != PLUGIN_RAISED) v.Close();
    } catch (const CException& error) {
        report.outcome = PLUGIN_RAISED;
        report.exceptionType = error.GetType();
        report.exceptionMethod = error.GetMethod();
        report.detail = error.GetReason();
    } catch (...) {
        report.outcome = PLUGIN_RAISED;
    }
    if (!isClosing) tell(MakeMessage(TStage::Closing));
    tell(MakeMessage(TStage::Done, report));
    // The library may be half open, which is no state to end in by itself.
    if (report.outcome == PLUGIN_RAISED) EndNow();
    return isHeard ? 0 : kExitUnheard;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = GetArguments(argc, argv);
    const bool isDecoding = arguments.size() >= 3 && arguments[1] == "--decode";
    if (!isDecoding && arguments.size() != 2) {
        std::fputs("vorlund-plugin-scan tries plug-ins for the Vorlund library, which starts it\n", stderr);
        return kExitUsage;
    }
    EndQuietly();
    SilenceMessages();
    if (isDecoding) {
        LimitMemory(static_cast<unsigned int>(std::strtoul(arguments[2].c_str(), nullptr, 10)));
        Decode(arguments[0], {arguments.begin() + 3, arguments.end()});
    }
    LimitTime();
    return Run(arguments[0], arguments[1].c_str());
}
