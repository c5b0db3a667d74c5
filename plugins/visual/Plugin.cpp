// The plug-in "visual": pictures of sound.
#include "AudioPictures.h"

#include <vorlund/ObjectImpl.h>
#include <vorlund/Plugin.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

VRL_PLUGIN_INFO("visual", VORLUND_VERSION_STRING, "MIT")

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl(
        {CAudioPictures::ClassId, VRL_L("visual::CAudioPictures"), &NewObject<CAudioPictures>});
    return true;
}

void VrlClosePlugin() {}
