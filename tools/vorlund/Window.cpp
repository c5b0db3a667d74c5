// The command "window": the plasma generator, live, through the first video device.
#include "Commands.h"
#include "Diagnostics.h"
#include "FramePacer.h"
#include "Interrupt.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/ObjectList.h>
#include <vorlund/PlasmaVideoGenerator.h>
#include <vorlund/RefPtr.h>
#include <vorlund/VideoOutput.h>
#include <vorlund/Vorlund.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

using namespace vorlund;

namespace {

struct TShow {
    std::uint64_t shown = 0;
    std::uint64_t dropped = 0;
    /// From the first frame to the last.
    double seconds = 0;

    double GetRate() const { return shown > 1 && seconds > 0 ? static_cast<double>(shown - 1) / seconds : 0; }
};

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

CRefPtr<IVideoOutput> CreateOutput() {
    if (!HasVideoDevice()) throw TProgramError{VRL_L("There is no video device: no plug-in registered one")};
    auto output =
        CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(classid::CVideoDevice)).Query<IVideoOutput>();
    if (!output) throw TProgramError{VRL_L("The video device shows no frames")};
    return output;
}

/// Until `frames` have been shown, the window is closed, or the program is interrupted.
TShow Show(IInputStream& source, IVideoOutput& output, const TDataFormat_VideoRgb& format,
           std::uint64_t frames) {
    const CInterrupt interrupt;
    std::vector<std::uint8_t> frame(format.image.GetSizeInBytes());
    const auto start = CFramePacer::TClock::now();
    CFramePacer pacer(format.frameRate, start);
    TShow show;
    while (!interrupt.IsRaised()) {
        source.Read(frame.data(), frame.size());
        if (!output.Present(frame.data())) break;
        ++show.shown;
        const auto now = CFramePacer::TClock::now();
        show.seconds = std::chrono::duration<double>(now - start).count();
        if (show.shown == frames) break;
        std::this_thread::sleep_until(pacer.Next(now));
    }
    show.dropped = pacer.GetDropped();
    return show;
}

std::string FormatRate(double rate) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f per second", rate);
    return text;
}

} // namespace

void RunWindow(const TWindowOptions& options, CDiagnostics& diagnostics) {
    const auto plasma = CreateAs<IPlasmaVideoGenerator>(classid::CPlasmaVideoGenerator);
    auto format = static_cast<const TDataFormat_VideoRgb&>(plasma->GetFormat());
    format.image.width = options.size.width;
    format.image.height = options.size.height;
    plasma->SetFormat(&format);

    const auto output = CreateOutput();
    if (!output->Open(format, VRL_L("Plasma"))) {
        throw TProgramError{VRL_L("The video device cannot open a window: is there a display?")};
    }
    const TShow show = Show(*plasma, *output, format, options.frames);
    output->Close();

    diagnostics.PrintField("Size",
                           std::to_string(format.image.width) + " x " + std::to_string(format.image.height));
    diagnostics.PrintField("Frames", std::to_string(show.shown));
    diagnostics.PrintField("Dropped", std::to_string(show.dropped));
    diagnostics.PrintField("Rate", FormatRate(show.GetRate()));
    diagnostics.PrintField("Nominal", FormatRate(static_cast<double>(format.frameRate)));
}
