// The plug-in "sndfile": a decoder for the sound files that libsndfile reads, and encoders for some of them.
#include "SndfileDecoder.h"
#include "SndfileEncoder.h"

#include <vorlund/ObjectImpl.h>
#include <vorlund/Plugin.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/Vorlund.h>

#include <string_view>

#include <sndfile.h>

using namespace vorlund;

VRL_PLUGIN_INFO("sndfile", VORLUND_VERSION_STRING, "MIT")

bool VrlInitPlugin() {
    const std::string_view library = sf_version_string();
    NotePluginLibrary(wstring(library.begin(), library.end()).c_str());
    v.GetClassStore().RegisterClassVrl(
        {CSndfileDecoder::ClassId, VRL_L("sndfile::CSndfileDecoder"), &NewObject<CSndfileDecoder>});
    // Any input: the decoder looks at the bytes.
    v.GetCodecClassStore().RegisterDecoder(
        {CSndfileDecoder::ClassId, CId::Null(), TDataFormat_AudioPcm::FormatId});
    RegisterEncoders();
    return true;
}

void VrlClosePlugin() {}
