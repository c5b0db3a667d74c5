// The plug-in "image": a decoder for PNG and JPEG files.
#include "ImageDecoder.h"

#include <vorlund/ObjectImpl.h>
#include <vorlund/Plugin.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

VRL_PLUGIN_INFO("image", VORLUND_VERSION_STRING, "MIT")

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl(
        {CImageDecoder::ClassId, VRL_L("image::CImageDecoder"), &NewObject<CImageDecoder>});
    // Any input: the decoder looks at the bytes.
    v.GetCodecClassStore().RegisterDecoder(
        {CImageDecoder::ClassId, CId::Null(), TDataFormat_ImageRgb::FormatId});
    return true;
}

void VrlClosePlugin() {}
