// Loads the plug-in, and prints what it says of the system's sound: its name, how many outputs there are, and
// what comes of opening the default one.
#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"
#include "support/Outcome.h"

#include <vorlund/AudioSystem.h>
#include <vorlund/Debug.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>

#include <cstdio>

using namespace vorlund;

int main() {
    for (int type = DEBUG_MESSAGE_OUTPUT; type <= DEBUG_MESSAGE_STDERR; ++type)
        CDebug::SetHandler(static_cast<TDebugMessageType>(type),
                           [](TDebugMessageType, const wchar*, void*) {});
    v.GetPluginStore().AddPluginPath(test::ToVorlund(test::BesideProgram("vorlund-plugins")).c_str());
    v.Init();
    {
        const auto system = CreateAs<IAudioSystem>(kAudioSystemClassId);
        std::printf("%s\n", test::Narrow(system->GetName()).c_str());
        const std::string listed = test::Outcome([&] {
            const auto list = CRefPtr<IObjectList>::Adopt(system->EnumerateDevices(AUDIO_DIRECTION_OUTPUT));
            std::printf("%u\n", list->GetObjectCount());
        });
        std::printf("%s\n", listed.c_str());
        const auto device = CRefPtr<IDevice>::Adopt(v.GetDeviceClassStore().CreateDevice(DEVICE_TYPE_AUDIO));
        std::printf("%s\n", test::Outcome([&] { device->Open(); }).c_str());
        device->Close();
    }
    v.Close();
    return 0;
}
