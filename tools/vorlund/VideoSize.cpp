#include "VideoSize.h"

#include <charconv>

namespace {

constexpr std::uint32_t kMaxSide = 16384;

} // namespace

std::optional<TVideoSize> ParseVideoSize(std::string_view text) {
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
