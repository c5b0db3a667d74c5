// The plug-in "sndfile": a decoder for the sound files that libsndfile reads.
#include "SndfileDecoder.h"

#include <vorlund/ObjectImpl.h>
#include <vorlund/Plugin.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl(
        {CSndfileDecoder::ClassId, VRL_L("sndfile::CSndfileDecoder"), &NewObject<CSndfileDecoder>});
    // Any input: the decoder looks at the bytes.
    v.GetCodecClassStore().RegisterDecoder(
        {CSndfileDecoder::ClassId, CId::Null(), TDataFormat_AudioPcm::FormatId});
    return true;
}

void VrlClosePlugin() {}
