// Pictures and videos out of files, ready to be shown.
#pragma once

#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

#include <cstdint>
#include <string>
#include <vector>

/// The picture or video in a file, decoded to RGB by the plug-ins that are loaded. Raises `TProgramError`,
/// which says why not, and what opening the file raises.
vorlund::CRefPtr<vorlund::IInputStream> OpenMedia(const vorlund::wstring& path);

/// The side of a picture on the screen.
constexpr std::uint32_t kMaxShownWidth = 1920;
constexpr std::uint32_t kMaxShownHeight = 1080;

/// A picture as it is shown: pixels of `kPixelForm` (plugins/support/PixelForm.h) without alpha.
struct TShownPicture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint32_t> pixels;
};

/// Reads a decoded picture and puts it on white where it is transparent. One that is larger than a screen is
/// made smaller by a whole factor: each pixel is the mean of a square. Raises `TProgramError`.
TShownPicture ReadPicture(vorlund::IInputStream& stream);
