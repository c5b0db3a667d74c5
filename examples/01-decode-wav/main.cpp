#include <cstdio>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/Session.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/StreamTools.h>
using namespace vorlund;

int main() {
    try {
        const CSession session;
        const CInputStreamSelector source(VRL_L("strings.wav"));
        CFrameReader sound(CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId)));
        std::printf("%.2f seconds, %zu samples\n", sound.GetSeconds(), sound.ReadRest().size());
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
