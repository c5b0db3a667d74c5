// Decodes a WAV file and counts its PCM bytes.
#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>

#include <cstdio>

int main() {
    vorlund::v.Init();
    unsigned long long bytes = 0;
    {
        const vorlund::CInputStreamSelector source(VRL_L("strings.wav"));
        const auto pcm = vorlund::CRefPtr<vorlund::IInputStream>::Adopt(
            source.DecodeStream(vorlund::TDataFormat_AudioPcm::FormatId));
        char block[4096];
        while (const auto count = pcm->Read(block, sizeof block)) bytes += count;
    }
    vorlund::v.Close();
    std::printf("%llu bytes of PCM\n", bytes);
}
