// The plug-in "measure": levels and loudness.
#include "AudioMeter.h"

#include <vorlund/Plugin.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/Vorlund.h>

#include <string>

using namespace vorlund;

VRL_PLUGIN_INFO("measure", VORLUND_VERSION_STRING, "MIT")

bool VrlInitPlugin() {
    int major = 0;
    int minor = 0;
    int patch = 0;
    ebur128_get_version(&major, &minor, &patch);
    const std::string library =
        "libebur128 " + std::to_string(major) + '.' + std::to_string(minor) + '.' + std::to_string(patch);
    NotePluginLibrary(wstring(library.begin(), library.end()).c_str());
    v.GetClassStore().RegisterClassVrl(
        {CAudioMeter::ClassId, VRL_L("measure::CAudioMeter"), &NewObject<CAudioMeter>});
    return true;
}

void VrlClosePlugin() {}
