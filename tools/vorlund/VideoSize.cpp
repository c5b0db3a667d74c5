#include "VideoSize.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr std::uint32_t kMaxSide = 16384;

/// "640x480".
std::optional<TVideoSize> Parse(std::string_view text) {
    TVideoSize size{};
    const char* const end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, size.width);
    if (width.ec != std::errc() || width.ptr == end || *width.ptr != 'x') return std::nullopt;
    const auto height = std::from_chars(width.ptr + 1, end, size.height);
    if (height.ec != std::errc() || height.ptr != end) return std::nullopt;
    const auto isSide = [](std::uint32_t side) { return side >= 1 && side <= kMaxSide; };
    if (!isSide(size.width) || !isSide(size.height)) return std::nullopt;
    return size;
}

std::string Check(const std::string& text) {
    return Parse(text) ? "" : "needs a size like 640x480, at most 16384x16384, not " + text;
}

} // namespace

void AddVideoSizeOption(CLI::App& command, TVideoSize& size) {
    const std::string defaultText = std::to_string(size.width) + "x" + std::to_string(size.height);
    command
        .add_option_function<std::string>(
            "--size", [&size](const std::string& text) { size = *Parse(text); },
            "Width and height in pixels (default " + defaultText + ")")
        ->check(CLI::Validator(&Check, "WxH"));
}
