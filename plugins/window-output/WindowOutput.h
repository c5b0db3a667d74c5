// The video device that shows frames in a window.
#pragma once

#include "Surface.h"

#include <vorlund/DataFormat.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>
#include <vorlund/VideoWindow.h>
#include <vorlund/WindowedOutput.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

/// The window's thread draws the last frame again when the window has another size or was covered, so what it
/// needs for that is under a lock. Another one guards the application's handler, and is held while that runs.
class CWindowOutput : public vorlund::CObjectImpl<vorlund::IWindowedOutput> {
public:
    static constexpr vorlund::CId ClassId{0x9A3C1E77, 0x5D0F4B62, 0x8E41C7A9, 0x2B6F30D4};

    void Open() override;
    void Close() override;
    bool Open(const vorlund::TDataFormat_VideoRgb& format, const vorlund::wchar* title) override;
    bool Present(const void* frame) override;
    void SetHandler(vorlund::TWindowHandler handler, void* user) override;

protected:
    ~CWindowOutput() { Close(); }

private:
    static void OnWindowEvent(const vorlund::TWindowEvent& event, void* user);

    void KeepPixels(const std::uint32_t* frame);
    bool Draw();
    void DrawAgain();

    vorlund::TDataFormat_ImageRgb image_;
    vorlund::CRefPtr<vorlund::IVideoWindow> window_;
    /// Whether the window has told of itself since it was opened.
    std::atomic<bool> wasThere_ = false;

    std::mutex frameMutex_;
    /// The last frame as the surface takes it; empty before the first.
    std::vector<std::uint32_t> pixels_;
    // Drawn on the window, so it goes first.
    std::unique_ptr<CSurface> surface_;

    std::recursive_mutex handlerMutex_;
    vorlund::TWindowHandler handler_ = nullptr;
    void* user_ = nullptr;
};
