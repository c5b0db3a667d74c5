// The plug-in "system-codecs": a decoder for the sound that the system can decode, AAC and ALAC in M4A files.
#include "SystemDecoder.h"

#include <vorlund/ObjectImpl.h>
#include <vorlund/Plugin.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

VRL_PLUGIN_INFO("system-codecs", VORLUND_VERSION_STRING, "MIT")

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl(
        {CSystemDecoder::ClassId, VRL_L("system_codecs::CSystemDecoder"), &NewObject<CSystemDecoder>});
    // Any input: the decoder looks at the bytes.
    v.GetCodecClassStore().RegisterDecoder(
        {CSystemDecoder::ClassId, CId::Null(), TDataFormat_AudioPcm::FormatId});
    return true;
}

void VrlClosePlugin() {}
