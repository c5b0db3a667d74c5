// The option --size of the commands that make video.
#pragma once

#include <cstdint>

namespace CLI {
class App;
}

/// In pixels, each side 1 to 16384.
struct TVideoSize {
    std::uint32_t width;
    std::uint32_t height;
};

/// Adds "--size WxH" to a command; `size` holds the default, which the help tells.
void AddVideoSizeOption(CLI::App& command, TVideoSize& size);
