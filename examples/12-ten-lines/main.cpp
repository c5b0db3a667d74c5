#include <cstdio>
#include <vorlund/All.h>
using namespace vorlund;

int main() {
    const CSession session;
    const CInputStreamSelector file(VRL_L("strings.wav"));
    CFrameReader sound(CRefPtr<IInputStream>::Adopt(file.DecodeStream(TDataFormat_AudioPcm::FormatId)));
    std::printf("%zu samples\n", sound.ReadRest().size());
}
