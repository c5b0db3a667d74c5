// Does for the library, which starts it, what may end the process that does it. Not for people.
//
//   vorlund-plugin-scan CHANNEL FILE
// Tries one plug-in (`CPluginStore::SetScanMode`): opens the library without any other plug-in, loads and
// initialises the file, closes and unloads it, and tells the process that started it how far it came.
//
//   vorlund-plugin-scan CHANNEL --decode [FOLDER...]
// Decodes one stream with the plug-ins of those folders (`DecodeIsolated`).
#include "Arguments.h"
#include "DecodeSide.h"
#include "ScanSide.h"

#include "vorlund/api/plugins/ScanProtocol.h"

#include <vorlund/Debug.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>

#include <cstdio>

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

int Run(const std::string& channel, const char* file) {
    bool isHeard = true;
    const auto tell = [&](TStage stage, TPluginOutcome outcome = PLUGIN_BEGUN, std::int32_t code = 0) {
        const TMessage message{kMark, sizeof(message), stage, outcome, code};
        isHeard = Send(channel, &message, sizeof(message)) && isHeard;
    };
    tell(TStage::Loading);
    CPluginStore& store = v.GetPluginStore();
    store.ClearPluginPaths();
    bool isClosing = false;
    try {
        v.Init();
        const TPluginOutcome outcome = store.LoadPluginFile(PathFromUtf8(file).c_str());
        const std::int32_t code = store.GetReport(0).code;
        tell(TStage::Closing);
        isClosing = true;
        v.Close();
        tell(TStage::Done, outcome, code);
    } catch (...) {
        // The library may be half open, which is no state to end in by itself.
        if (!isClosing) tell(TStage::Closing);
        tell(TStage::Done, PLUGIN_RAISED);
        EndNow();
    }
    return isHeard ? 0 : kExitUnheard;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = GetArguments(argc, argv);
    const bool isDecoding = arguments.size() >= 2 && arguments[1] == "--decode";
    if (!isDecoding && arguments.size() != 2) {
        std::fputs("vorlund-plugin-scan tries plug-ins for the Vorlund library, which starts it\n", stderr);
        return kExitUsage;
    }
    EndQuietly();
    SilenceMessages();
    if (isDecoding) Decode(arguments[0], {arguments.begin() + 2, arguments.end()});
    LimitTime();
    return Run(arguments[0], arguments[1].c_str());
}
