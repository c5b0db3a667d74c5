// A whole plug-in: it brings a decoder.
#include "SampleDecoder.h"

#include <vorlund/ObjectImpl.h>
#include <vorlund/Plugin.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

VRL_PLUGIN_INFO("sample", "1.0", "MIT")

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl(
        {CSampleDecoder::ClassId, VRL_L("sample::CSampleDecoder"), &NewObject<CSampleDecoder>});
    // Any input: the decoder looks at the bytes.
    v.GetCodecClassStore().RegisterDecoder(
        {CSampleDecoder::ClassId, CId::Null(), TDataFormat_AudioPcm::FormatId});
    return true;
}

void VrlClosePlugin() {}
