// Decodes the file that the argument names, and prints the processor time that this took, the peak of the
// memory, and the bytes of the picture, 0 for a file that is refused.
#include "bounds/ProcessUse.h"
#include "plugins/DecoderPlugin.h"

#include <vorlund/Debug.h>

#include <cstdio>

using namespace vorlund;

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    for (int type = DEBUG_MESSAGE_OUTPUT; type <= DEBUG_MESSAGE_STDERR; ++type)
        CDebug::SetHandler(static_cast<TDebugMessageType>(type),
                           [](TDebugMessageType, const wchar*, void*) {});
    v.GetPluginStore().AddPluginPath(test::ToVorlund(test::BesideProgram("vorlund-plugins")).c_str());
    v.Init();
    unsigned long long decoded = 0;
    try {
        const auto stream = CRefPtr<IInputStream>::Adopt(v.GetCodecClassStore().DecodeFile(
            test::ToVorlund(argv[1]).c_str(), TDataFormat_ImageRgb::FormatId));
        decoded = static_cast<unsigned long long>(stream->GetLength());
    } catch (const CDataFormatException&) {
    }
    v.Close();
    const test::TProcessUse use = test::GetProcessUse();
    std::printf("%llu ms %llu bytes for %llu\n", static_cast<unsigned long long>(use.milliseconds),
                static_cast<unsigned long long>(use.peakBytes), decoded);
    return 0;
}
