// The plug-in "audio": the sound devices of the system.
#include "AudioSystem.h"
#include "SdlPort.h"

#include <vorlund/AudioPort.h>
#include <vorlund/Plugin.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

VRL_PLUGIN_INFO("audio", VORLUND_VERSION_STRING, "MIT")

namespace {

constexpr CId kDefaultOutput{0xD7A15C84, 0x3B604E92, 0xA0F9471E, 0x68C2B35D};

IObject* NewDefaultOutput() {
    const auto port = CRefPtr<CSdlPort>::Adopt(CreateSdlPort({}, false));
    return CreateAudioOutput(port.Get(), true);
}

} // namespace

bool VrlInitPlugin() {
#define VORLUND_TEXT(number) #number
#define VORLUND_VALUE(number) VORLUND_TEXT(number)
    NotePluginLibrary(VRL_L("SDL-" VORLUND_VALUE(SDL_MAJOR_VERSION) "." VORLUND_VALUE(
        SDL_MINOR_VERSION) "." VORLUND_VALUE(SDL_PATCHLEVEL)));
    v.GetClassStore().RegisterClassVrl(
        {CSdlAudioSystem::ClassId, VRL_L("audio::CAudioSystem"), &NewObject<CSdlAudioSystem>});
    v.GetClassStore().RegisterClassVrl({kDefaultOutput, VRL_L("audio::CDefaultOutput"), &NewDefaultOutput});
    v.GetDeviceClassStore().RegisterDevice({kDefaultOutput, DEVICE_TYPE_AUDIO});
    return true;
}

void VrlClosePlugin() {}
