// The plug-in "window-output": a video device that shows frames in a window.
#include "WindowOutput.h"

#include <vorlund/Plugin.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

VRL_PLUGIN_INFO("window-output", VORLUND_VERSION_STRING, "MIT")

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl(
        {CWindowOutput::ClassId, VRL_L("CWindowOutput"), &NewObject<CWindowOutput>});
    v.GetDeviceClassStore().RegisterDevice({CWindowOutput::ClassId, DEVICE_TYPE_VIDEO});
    return true;
}

void VrlClosePlugin() {}
