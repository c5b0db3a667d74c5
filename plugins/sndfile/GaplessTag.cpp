#include "GaplessTag.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view kName = "iTunSMPB";
/// Texts come before pictures in all writers that are known.
constexpr std::int64_t kMaxTagSize = 1 << 20;

/// The next hexadecimal number of `text`, which is cut behind it.
std::optional<std::uint32_t> TakeNumber(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    std::uint32_t number = 0;
    const auto [next, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    if (error != std::errc()) return {};
    text.remove_prefix(static_cast<std::size_t>(next - text.data()));
    return number;
}

} // namespace

std::optional<TGaplessTag> ReadGaplessTag(CVirtualFile& file, std::int64_t size) {
    std::string bytes(static_cast<std::size_t>(std::min(size, kMaxTagSize)), '\0');
    file.Seek(0);
    bytes.resize(static_cast<std::size_t>(file.Read(bytes.data(), static_cast<std::int64_t>(bytes.size()))));
    // Texts of two bytes a character become those of one; the marks of their order go too.
    std::erase_if(bytes, [](char byte) { return byte == '\0' || byte == '\xFF' || byte == '\xFE'; });
    std::string_view text = bytes;
    const std::size_t at = text.find(kName);
    if (at == text.npos) return {};
    text.remove_prefix(at + kName.size());
    const auto reserved = TakeNumber(text);
    const auto delay = TakeNumber(text);
    const auto padding = TakeNumber(text);
    if (!reserved || !delay || !padding) return {};
    return TGaplessTag{*delay, *padding};
}
