/// \file
/// Video devices that show frames in a window of the desktop, and what happens to that window.
#pragma once

#include <vorlund/VideoOutput.h>
#include <vorlund/WindowEvents.h>

namespace vorlund {

/// A video device with a window. That of the plug-in `window-output` is one: ask any video device by
/// `CRefPtr::Query<IWindowedOutput>`; one that has no window answers with none. One thread at a time. Since
/// version 0.1.
class IWindowedOutput : public IVideoOutput {
public:
    using TBase = IVideoOutput;
    static constexpr CId InterfaceId{0x68E3AF03, 0x1DA96B64, 0x54901BD2, 0xFAAB479A};

    /// The handler of the events of the window that is there and of those that `Open` shows later; null for
    /// none. What it may do and when it is called is told at `TWindowHandler` and `SetWindowHandler`. Besides
    /// it may not use the device, which draws what was covered, or has a new size, by itself.
    virtual void SetHandler(TWindowHandler handler, void* user = nullptr) = 0;

protected:
    ~IWindowedOutput() = default;
};

} // namespace vorlund
