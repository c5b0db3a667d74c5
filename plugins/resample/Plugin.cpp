// The plug-in "resample": PCM audio at another rate.
#include "Engine.h"
#include "Resampler.h"

#include <vorlund/ObjectImpl.h>
#include <vorlund/Plugin.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

VRL_PLUGIN_INFO("resample", VORLUND_VERSION_STRING, "MIT")

bool VrlInitPlugin() {
    NotePluginLibrary(GetEngineLibrary().GetBuffer());
    v.GetClassStore().RegisterClassVrl(
        {CResampler::ClassId, VRL_L("resample::CResampler"), &NewObject<CResampler>});
    return true;
}

void VrlClosePlugin() {}
