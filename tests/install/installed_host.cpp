// An application outside the installation, with the plug-ins of the installation: it decodes a recording and
// the same one as FLAC.
#include <vorlund/DataFormat.h>
#include <vorlund/PluginReport.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>

#include <cstdio>
#include <string>

using namespace vorlund;

namespace {

/// The PCM of a file.
std::string Decode(const char* path) {
    wstring wide;
    for (; *path; ++path) wide += static_cast<wchar>(*path);
    const CInputStreamSelector source(wide.c_str());
    const auto pcm = CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId));
    std::string bytes;
    char block[4096];
    while (const auto count = pcm->Read(block, sizeof block))
        bytes.append(block, static_cast<std::size_t>(count));
    return bytes;
}

/// How many plug-ins tell that they are the one for FLAC; -1 when any was loaded more than once, or failed.
int CountDecoders() {
    const CPluginStore& store = v.GetPluginStore();
    int count = 0;
    for (unsigned int i = 0; i < store.GetReportCount(); ++i) {
        const TPluginReport report = store.GetReport(i);
        // Libraries that plug-ins need lie beside them.
        if (report.outcome == PLUGIN_NO_PLUGIN || report.outcome == PLUGIN_FOLDER_OPEN) continue;
        if (report.outcome != PLUGIN_LOADED || report.loads != 1) return -1;
        if (report.hasInfo && report.name == VRL_L("sndfile")) ++count;
    }
    return count;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 1;
    // The second call adds nothing.
    if (!AddInstalledPlugins() || !AddInstalledPlugins()) return 2;
    v.Init();
    const int decoders = CountDecoders();
    const std::string plain = Decode(argv[1]);
    const std::string flac = Decode(argv[2]);
    v.Close();
    std::printf("installed_host: %d plug-in, %zu and %zu bytes of PCM\n", decoders, plain.size(),
                flac.size());
    return decoders == 1 && !plain.empty() && plain == flac ? 0 : 3;
}
