#include "WindowOutput.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>

#include <algorithm>

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
    const TPixelFormat& pixel = image_.pixelFormat;
    isNative_ = pixel.redShift == 16 && pixel.greenShift == 8 && pixel.blueShift == 0;

    window_ = CreateAs<IVideoWindow>(classid::CVideoWindow);
    if (!window_) return false;
    window_->SetTitle(title);
    window_->SetClientSize(static_cast<int>(image_.width), static_cast<int>(image_.height));
    window_->Open();
    if (window_->GetHandle()) surface_ = CSurface::Create(window_->GetHandle());
    if (surface_) return true;
    Close();
    return false;
}

bool CWindowOutput::Present(const void* frame) {
    // Once the user has closed the window, its number may be somebody else's.
    if (!surface_ || !window_->GetHandle()) return false;
    const std::uint32_t* const pixels = ToSurfacePixels(static_cast<const std::uint32_t*>(frame));
    return surface_->Draw(pixels, static_cast<int>(image_.width), static_cast<int>(image_.height));
}

void CWindowOutput::Close() {
    surface_ = nullptr;
    if (window_) window_->Close();
    window_.Reset();
}

const std::uint32_t* CWindowOutput::ToSurfacePixels(const std::uint32_t* frame) {
    if (isNative_) return frame;
    const TPixelFormat& pixel = image_.pixelFormat;
    const std::size_t count = std::size_t{image_.width} * image_.height;
    converted_.resize(count);
    std::transform(frame, frame + count, converted_.begin(), [&pixel](std::uint32_t word) {
        return (word >> pixel.redShift & 0xFF) << 16 | (word >> pixel.greenShift & 0xFF) << 8 |
               (word >> pixel.blueShift & 0xFF);
    });
    return converted_.data();
}
