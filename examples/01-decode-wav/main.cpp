#include <cstdio>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>
using namespace vorlund;

int Decode(const wchar* path) {
    try {
        const CInputStreamSelector source(path);
        const auto pcm = CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId));
        unsigned long long bytes = 0;
        char block[4096];
        while (const auto count = pcm->Read(block, sizeof block)) bytes += count;
        std::printf("%llu bytes of PCM\n", bytes);
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}

int main() {
    v.Init();
    // All objects live inside Decode: none is left when the library closes.
    const int status = Decode(VRL_L("strings.wav"));
    v.Close();
    return status;
}
