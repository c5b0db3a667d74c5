// The plug-in "y4m": a decoder for uncompressed video in YUV4MPEG2 files.
#include "Y4mDecoder.h"

#include <vorlund/ObjectImpl.h>
#include <vorlund/Plugin.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

VRL_PLUGIN_INFO("y4m", VORLUND_VERSION_STRING, "MIT")

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl(
        {CY4mDecoder::ClassId, VRL_L("y4m::CY4mDecoder"), &NewObject<CY4mDecoder>});
    // Any input: the decoder looks at the bytes.
    v.GetCodecClassStore().RegisterDecoder(
        {CY4mDecoder::ClassId, CId::Null(), TDataFormat_VideoRgb::FormatId});
    return true;
}

void VrlClosePlugin() {}
