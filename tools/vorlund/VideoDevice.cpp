#include "VideoDevice.h"

#include "Diagnostics.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

namespace {

/// The store is asked before it creates: a creation that finds no device leaves the store locked.
bool HasVideoDevice() {
    const auto devices = CRefPtr<IObjectList>::Adopt(v.GetDeviceClassStore().EnumerateDevices());
    for (unsigned int i = 0; i < devices->GetObjectCount(); ++i) {
        const auto device = CRefPtr<IObject>::Adopt(devices->GetObject(i)).Query<IPtrObject>();
        const auto* const info = static_cast<const TDeviceClassInfo*>(device->GetPtr());
        if (info->deviceType == DEVICE_TYPE_VIDEO) return true;
    }
    return false;
}

} // namespace

CRefPtr<IVideoOutput> MakeVideoOutput() {
    if (!HasVideoDevice()) throw TProgramError{VRL_L("There is no video device: no plug-in registered one")};
    auto output =
        CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(classid::CVideoDevice)).Query<IVideoOutput>();
    if (!output) throw TProgramError{VRL_L("The video device shows no frames")};
    return output;
}

void OpenVideoOutput(IVideoOutput& output, const TDataFormat_VideoRgb& format, const wstring& title) {
    if (!output.Open(format, title.c_str()))
        throw TProgramError{VRL_L("The video device cannot open a window: is there a display?")};
}
