#include "EncoderOptions.h"

#include <vorlund/Exception.h>

#include <charconv>
#include <string_view>

#include <sndfile.h>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/sndfile/EncoderOptions");
constexpr const wchar* kSetOption = VRL_L("CSndfileEncoder::SetOption");
constexpr const wchar* kSetTag = VRL_L("CSndfileEncoder::SetTag");

constexpr TFailure kNullOption{kSetOption, kFile, 1, VRL_L("name or value is NULL")};
constexpr TFailure kNoOption{kSetOption, kFile, 2, VRL_L("This kind of file has no such option")};
constexpr TFailure kBadBits{kSetOption, kFile, 3,
                            VRL_L("The option 'bits' is 8, 16 or 24, for AIFF also 32 or float")};
constexpr TFailure kBadQuality{kSetOption, kFile, 4,
                               VRL_L("The option 'quality' is a number from 0 to 1, the best")};
constexpr TFailure kBadCompression{
    kSetOption, kFile, 5, VRL_L("The option 'compression' is a number from 0 to 1, the smallest file")};
constexpr TFailure kBadMode{kSetOption, kFile, 6,
                            VRL_L("The option 'bitrate mode' is constant, average or variable")};
constexpr TFailure kNullTag{kSetTag, kFile, 7, VRL_L("name or text is NULL")};
constexpr TFailure kNoTag{kSetTag, kFile, 8, VRL_L("This kind of file has no such tag")};

/// UTF-8; a lone surrogate becomes U+FFFD.
std::string Encode(std::basic_string_view<wchar> text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t code = static_cast<std::uint16_t>(text[i]);
        if (code >= 0xD800 && code < 0xE000) {
            const std::uint32_t low = i + 1 < text.size() ? static_cast<std::uint16_t>(text[i + 1]) : 0;
            if (code < 0xDC00 && low >= 0xDC00 && low < 0xE000) {
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
                ++i;
            } else {
                code = 0xFFFD;
            }
        }
        const auto put = [&](std::uint32_t byte) { bytes += static_cast<char>(byte); };
        if (code < 0x80) {
            put(code);
            continue;
        }
        const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        constexpr std::uint32_t kFirst[] = {0, 0xC0, 0xE0, 0xF0};
        put(kFirst[more] | code >> 6 * more);
        for (int rest = more - 1; rest >= 0; --rest) put(0x80 | (code >> 6 * rest & 0x3F));
    }
    return bytes;
}

std::optional<double> ParseShare(std::string_view text) {
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return {};
    if (!(number >= 0 && number <= 1)) return {};
    return number;
}

std::optional<int> ParseBits(std::string_view text, const TSoundKind& kind) {
    if (text == "8") return SF_FORMAT_PCM_S8;
    if (text == "16") return SF_FORMAT_PCM_16;
    if (text == "24") return SF_FORMAT_PCM_24;
    if (text == "32" && kind.hasFloats) return SF_FORMAT_PCM_32;
    if (text == "float" && kind.hasFloats) return SF_FORMAT_FLOAT;
    return {};
}

std::optional<int> ParseMode(std::string_view text) {
    if (text == "constant") return SF_BITRATE_MODE_CONSTANT;
    if (text == "average") return SF_BITRATE_MODE_AVERAGE;
    if (text == "variable") return SF_BITRATE_MODE_VARIABLE;
    return {};
}

struct TTagName {
    std::string_view name;
    int number;
    bool isOfAiff;
};
constexpr TTagName kTags[] = {
    {"title", SF_STR_TITLE, true},      {"artist", SF_STR_ARTIST, true},
    {"comment", SF_STR_COMMENT, true},  {"copyright", SF_STR_COPYRIGHT, true},
    {"album", SF_STR_ALBUM, false},     {"date", SF_STR_DATE, false},
    {"genre", SF_STR_GENRE, false},     {"track number", SF_STR_TRACKNUMBER, false},
    {"license", SF_STR_LICENSE, false},
};

} // namespace

void CEncoderOptions::SetOption(const wchar* name, const wchar* value) {
    if (!name || !value) Raise<CNullPtrException>(kNullOption);
    const std::string option = Encode(name);
    const std::string text = Encode(value);
    const bool isSet = !text.empty();
    if (option == "bits" && kind_.subtype == 0) {
        const auto parsed = ParseBits(text, kind_);
        if (isSet && !parsed) Raise<CInvalidParameterException>(kBadBits);
        bits = parsed;
    } else if (option == "quality" && kind_.hasQuality) {
        const auto parsed = ParseShare(text);
        if (isSet && !parsed) Raise<CInvalidParameterException>(kBadQuality);
        quality = parsed;
    } else if (option == "compression" && kind_.hasCompression) {
        const auto parsed = ParseShare(text);
        if (isSet && !parsed) Raise<CInvalidParameterException>(kBadCompression);
        compression = parsed;
    } else if (option == "bitrate mode" && kind_.hasBitrateMode) {
        const auto parsed = ParseMode(text);
        if (isSet && !parsed) Raise<CInvalidParameterException>(kBadMode);
        bitrateMode = parsed;
    } else {
        Raise<CInvalidParameterException>(kNoOption);
    }
}

void CEncoderOptions::SetTag(const wchar* name, const wchar* text) {
    if (!name || !text) Raise<CNullPtrException>(kNullTag);
    const std::string wanted = Encode(name);
    for (const TTagName& tag : kTags) {
        if (tag.name != wanted || !(tag.isOfAiff || kind_.hasAllTags)) continue;
        tags_.erase(tag.number);
        if (*text) tags_[tag.number] = Encode(text);
        return;
    }
    Raise<CInvalidParameterException>(kNoTag);
}
