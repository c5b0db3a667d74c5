#include "WindowOutput.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <new>
#include <utility>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/window-output/WindowOutput");
constexpr const wchar* kMethod = VRL_L("CWindowOutput::Open");
constexpr TFailure kWrongFormat{kMethod, kFile, 1, VRL_L("Unsupported format ID")};
constexpr TFailure kWrongPixels{kMethod, kFile, 2, VRL_L("Unsupported pixel format")};

/// Window systems hold sizes in 16 bits.
constexpr std::uint32_t kMaxSide = 32767;

bool IsChannelOfOneByte(std::uint32_t bits, std::uint32_t shift) {
    return bits == 8 && shift <= 24;
}

/// Formats are told apart by their shifts: the library's generators report their own, whatever constants of
/// that name hold.
bool CanShow(const TDataFormat_ImageRgb& image) {
    const TPixelFormat& pixel = image.pixelFormat;
    return pixel.bitsPerPixel == 32 && IsChannelOfOneByte(pixel.redBits, pixel.redShift) &&
           IsChannelOfOneByte(pixel.greenBits, pixel.greenShift) &&
           IsChannelOfOneByte(pixel.blueBits, pixel.blueShift) && image.width >= 1 && image.height >= 1 &&
           image.width <= kMaxSide && image.height <= kMaxSide;
}

} // namespace

void CWindowOutput::Open() {
    TDataFormat_VideoRgb format;
    format.SetDefaults();
    Open(format, VRL_L("Video"));
}

bool CWindowOutput::Open(const TDataFormat_VideoRgb& format, const wchar* title) {
    Close();
    if (format.id != TDataFormat_VideoRgb::FormatId) Raise<CDataFormatException>(kWrongFormat);
    if (!CanShow(format.image)) Raise<CDataFormatException>(kWrongPixels);
    image_ = format.image;

    window_ = CreateAs<IVideoWindow>(classid::CVideoWindow);
    if (!window_) return false;
    window_->SetTitle(title);
    window_->SetClientSize(static_cast<int>(image_.width), static_cast<int>(image_.height));
    wasThere_ = false;
    SetWindowHandler(*window_.Get(), &OnWindowEvent, this);
    window_->Open();
    if (window_->GetHandle()) {
        auto surface = CSurface::Create(window_->GetHandle());
        const std::lock_guard lock(frameMutex_);
        surface_ = std::move(surface);
        if (surface_) return true;
    }
    // The user may have closed it already, as `Present` tells.
    if (wasThere_ && !window_->GetHandle()) return true;
    Close();
    return false;
}

bool CWindowOutput::Present(const void* frame) {
    // Once the user has closed the window, its number may be somebody else's.
    if (!window_ || !window_->GetHandle()) return false;
    const std::lock_guard lock(frameMutex_);
    KeepPixels(static_cast<const std::uint32_t*>(frame));
    return Draw();
}

void CWindowOutput::Close() {
    // Behind this the window's thread is not in here.
    if (window_) SetWindowHandler(*window_.Get(), nullptr);
    surface_ = nullptr;
    pixels_.clear();
    if (window_) window_->Close();
    window_.Reset();
}

void CWindowOutput::SetHandler(TWindowHandler handler, void* user) {
    const std::lock_guard lock(handlerMutex_);
    handler_ = handler;
    user_ = user;
}

void CWindowOutput::OnWindowEvent(const TWindowEvent& event, void* user) {
    auto& self = *static_cast<CWindowOutput*>(user);
    self.wasThere_ = true;
    if (event.type == WINDOW_EVENT_RESIZED || event.type == WINDOW_EVENT_EXPOSED) self.DrawAgain();
    const std::lock_guard lock(self.handlerMutex_);
    if (self.handler_) self.handler_(event, self.user_);
}

void CWindowOutput::DrawAgain() {
    const std::lock_guard lock(frameMutex_);
    try {
        Draw();
    } catch (const std::bad_alloc&) {
        // Nobody has asked for it who could be told; the next frame is drawn whole.
    }
}

bool CWindowOutput::Draw() {
    if (!surface_) return false;
    return pixels_.empty() ||
           surface_->Draw(pixels_.data(), static_cast<int>(image_.width), static_cast<int>(image_.height));
}

void CWindowOutput::KeepPixels(const std::uint32_t* frame) {
    const TPixelFormat& pixel = image_.pixelFormat;
    const std::size_t count = std::size_t{image_.width} * image_.height;
    if (pixel.redShift == 16 && pixel.greenShift == 8 && pixel.blueShift == 0) {
        pixels_.assign(frame, frame + count);
        return;
    }
    pixels_.resize(count);
    std::transform(frame, frame + count, pixels_.begin(), [&pixel](std::uint32_t word) {
        return (word >> pixel.redShift & 0xFF) << 16 | (word >> pixel.greenShift & 0xFF) << 8 |
               (word >> pixel.blueShift & 0xFF);
    });
}
