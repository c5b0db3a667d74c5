/// \file
/// Video devices that show frames.
#pragma once

#include <vorlund/Device.h>
#include <vorlund/Platform.h>

namespace vorlund {

struct TDataFormat_VideoRgb;

/// A video device that shows frames on a surface, such as a window. `Close` takes the surface away. One
/// thread at a time.
///
/// \code{.cpp}
/// // A red window, by the plug-in window-output.
/// const auto device = CRefPtr<IDevice>::Adopt(v.GetDeviceClassStore().CreateDevice(DEVICE_TYPE_VIDEO));
/// const auto video = device.Query<IVideoOutput>();
/// TDataFormat_VideoRgb format;
/// format.SetDefaults(); // 640 x 480
/// const std::vector<std::uint32_t> frame(640 * 480, 0xFF0000);
/// if (video->Open(format, VRL_L("Red"))) video->Present(frame.data());
/// video->Close();
/// \endcode
class IVideoOutput : public IDevice {
public:
    using TBase = IDevice;
    static constexpr CId InterfaceId{0x4F714F40, 0x9133B93F, 0x5F77CBB2, 0x7827E4EA};

    /// `Open` of `IDevice` opens for the defaults of `TDataFormat_VideoRgb`.
    using IDevice::Open;

    /// Shows a surface for frames of `format`, after closing the one before. Returns false when the system
    /// has no surface, for example without a display. Raises `CDataFormatException` "Unsupported format ID"
    /// unless the format is RGB video, and "Unsupported pixel format" unless pixels have 32 bits with red,
    /// green and blue of 8 bits at any shifts, or the frame is empty or too big.
    virtual bool Open(const TDataFormat_VideoRgb& format, const wchar* title) = 0;

    /// Shows a frame of the format given to `Open`: rows from top to bottom without padding. Returns
    /// false when there is no surface, because none was opened, it was closed, or the user has closed it.
    virtual bool Present(const void* frame) = 0;

protected:
    ~IVideoOutput() = default;
};

} // namespace vorlund
