// The size of the video that the commands make.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// In pixels, each side 1 to 16384.
struct TVideoSize {
    std::uint32_t width;
    std::uint32_t height;
};

/// A size as it is written, "640x480".
std::optional<TVideoSize> ParseVideoSize(std::string_view text);
