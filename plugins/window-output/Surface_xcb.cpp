// Drawing on a window of the X Window System, by the core protocol's PutImage.
#include "Placement.h"
#include "Surface.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <vector>

namespace {

class CSurfaceXcb final : public CSurface {
public:
    explicit CSurfaceXcb(xcb_window_t window) : connection_(xcb_connect(nullptr, nullptr)), window_(window) {}
    ~CSurfaceXcb() override { xcb_disconnect(connection_); }

    /// Looks whether the window takes images of 32 bits a pixel, and makes what is needed to draw.
    bool Open();
    bool Draw(const std::uint32_t* pixels, int width, int height) override;

private:
    /// The window's present size and depth, or nothing when it is gone.
    std::optional<xcb_get_geometry_reply_t> GetGeometry() const;
    bool HasPixelsOf32Bits(int depth) const;
    void DrawBars(const TPlace& place, int insideWidth, int insideHeight);
    const std::uint32_t* Scale(const std::uint32_t* pixels, int width, int height, int toWidth, int toHeight);

    xcb_connection_t* connection_;
    xcb_window_t window_;
    xcb_gcontext_t context_ = 0;
    std::vector<std::uint32_t> scaled_;
};

bool CSurfaceXcb::Open() {
    if (xcb_connection_has_error(connection_)) return false;
    const auto geometry = GetGeometry();
    if (!geometry || !HasPixelsOf32Bits(geometry->depth)) return false;
    context_ = xcb_generate_id(connection_);
    // Black; and without the second, every image would send an event back.
    const std::uint32_t values[] = {0, 0};
    xcb_create_gc(connection_, context_, window_, XCB_GC_FOREGROUND | XCB_GC_GRAPHICS_EXPOSURES, values);
    return true;
}

std::optional<xcb_get_geometry_reply_t> CSurfaceXcb::GetGeometry() const {
    xcb_get_geometry_reply_t* const reply =
        xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window_), nullptr);
    if (!reply) return {};
    const xcb_get_geometry_reply_t geometry = *reply;
    std::free(reply);
    return geometry;
}

/// Screens with 24 bits of colour lay them out as blue, green, red everywhere that matters; deeper ones and
/// palettes are left out.
bool CSurfaceXcb::HasPixelsOf32Bits(int depth) const {
    if (depth != 24 && depth != 32) return false;
    auto formats = xcb_setup_pixmap_formats_iterator(xcb_get_setup(connection_));
    for (; formats.rem > 0; xcb_format_next(&formats)) {
        if (formats.data->depth == depth) return formats.data->bits_per_pixel == 32;
    }
    return false;
}

bool CSurfaceXcb::Draw(const std::uint32_t* pixels, int width, int height) {
    // Waiting for the answer also keeps this thread from drawing faster than the server can show.
    const auto geometry = GetGeometry();
    if (!geometry) return false;
    const TPlace place = FitInto(width, height, geometry->width, geometry->height);
    pixels = Scale(pixels, width, height, place.width, place.height);
    DrawBars(place, geometry->width, geometry->height);

    const std::size_t rowSize = static_cast<std::size_t>(place.width) * 4;
    constexpr std::size_t kRequestHead = 64;
    const std::size_t room = std::size_t{xcb_get_maximum_request_length(connection_)} * 4 - kRequestHead;
    // A place is at least one pixel wide. NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
    const int rowsAtOnce = static_cast<int>(std::clamp<std::size_t>(room / rowSize, 1, 0x7FFF));
    for (int row = 0; row < place.height; row += rowsAtOnce) {
        const int rows = std::min(rowsAtOnce, place.height - row);
        xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window_, context_,
                      static_cast<std::uint16_t>(place.width), static_cast<std::uint16_t>(rows),
                      static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y + row), 0,
                      geometry->depth, static_cast<std::uint32_t>(rowSize * static_cast<std::size_t>(rows)),
                      reinterpret_cast<const std::uint8_t*>(pixels) +
                          rowSize * static_cast<std::size_t>(row));
    }
    return xcb_flush(connection_) > 0;
}

void CSurfaceXcb::DrawBars(const TPlace& place, int insideWidth, int insideHeight) {
    const auto [before, after] = GetBars(place, insideWidth, insideHeight);
    for (const TPlace& bar : {before, after}) {
        if (bar.width <= 0 || bar.height <= 0) continue;
        const xcb_rectangle_t rectangle{static_cast<std::int16_t>(bar.x), static_cast<std::int16_t>(bar.y),
                                        static_cast<std::uint16_t>(bar.width),
                                        static_cast<std::uint16_t>(bar.height)};
        xcb_poly_fill_rectangle(connection_, window_, context_, 1, &rectangle);
    }
}

/// The nearest pixel, from the middle of each.
const std::uint32_t* CSurfaceXcb::Scale(const std::uint32_t* pixels, int width, int height, int toWidth,
                                        int toHeight) {
    if (width == toWidth && height == toHeight) return pixels;
    scaled_.resize(static_cast<std::size_t>(toWidth) * static_cast<std::size_t>(toHeight));
    auto out = scaled_.begin();
    for (std::int64_t y = 0; y < toHeight; ++y) {
        const std::uint32_t* const row = pixels + (2 * y + 1) * height / (2 * toHeight) * width;
        for (std::int64_t x = 0; x < toWidth; ++x) *out++ = row[(2 * x + 1) * width / (2 * toWidth)];
    }
    return scaled_.data();
}

} // namespace

std::unique_ptr<CSurface> CSurface::Create(void* handle) {
    auto surface =
        std::make_unique<CSurfaceXcb>(static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(handle)));
    if (!surface->Open()) return nullptr;
    return surface;
}
