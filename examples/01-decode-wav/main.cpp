#include <cstdio>
#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>
using namespace vorlund;

int main() {
    v.Init();
    unsigned long long bytes = 0;
    {
        const CInputStreamSelector source(VRL_L("strings.wav"));
        const auto pcm = CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId));
        char block[4096];
        while (const auto count = pcm->Read(block, sizeof block)) bytes += count;
    }
    v.Close();
    std::printf("%llu bytes of PCM\n", bytes);
}
