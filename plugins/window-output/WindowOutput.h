// The video device that shows frames in a window.
#pragma once

#include "Surface.h"

#include <vorlund/DataFormat.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>
#include <vorlund/VideoOutput.h>
#include <vorlund/VideoWindow.h>

#include <cstdint>
#include <memory>
#include <vector>

class CWindowOutput : public vorlund::CObjectImpl<vorlund::IVideoOutput> {
public:
    static constexpr vorlund::CId ClassId{0x9A3C1E77, 0x5D0F4B62, 0x8E41C7A9, 0x2B6F30D4};

    void Open() override;
    void Close() override;
    bool Open(const vorlund::TDataFormat_VideoRgb& format, const vorlund::wchar* title) override;
    bool Present(const void* frame) override;

private:
    const std::uint32_t* ToSurfacePixels(const std::uint32_t* frame);

    vorlund::TDataFormat_ImageRgb image_;
    /// Whether the surface takes the frame's pixels as they are.
    bool isNative_ = false;
    std::vector<std::uint32_t> converted_;
    vorlund::CRefPtr<vorlund::IVideoWindow> window_;
    // Drawn on the window, so it goes first.
    std::unique_ptr<CSurface> surface_;
};
