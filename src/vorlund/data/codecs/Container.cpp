#include "vorlund/data/codecs/Container.h"

#include <vorlund/DecodeReport.h>

#include <algorithm>
#include <string_view>

namespace vorlund {
namespace {

using namespace std::string_view_literals;

constexpr TContainer BySndfile(const wchar* name) {
    return {name, VRL_L("sndfile"), VRL_L("sndfile::CSndfileDecoder")};
}
constexpr TContainer BySystem(const wchar* name) {
    return {name, VRL_L("system-codecs"), VRL_L("system_codecs::CSystemDecoder")};
}
constexpr TContainer ByImage(const wchar* name) {
    return {name, VRL_L("image"), VRL_L("image::CImageDecoder")};
}
constexpr TContainer ByNobody(const wchar* name) {
    return {name, nullptr, nullptr};
}

/// A file is of the first kind whose two marks it has; the second may be empty.
struct TMark {
    TContainer container;
    std::string_view first;
    std::size_t at = 0;
    std::string_view second = {};
};

// Signatures as the formats define them: RIFF and its relatives (Microsoft, EBU Tech 3306, ITU-R BS.2088,
// Sony Wave64), AIFF (Apple), Ogg (RFC 3533, 5334, 7845), FLAC (RFC 9639), ISO base media (ISO/IEC 14496-12),
// PNG (ISO/IEC 15948), JPEG (ITU-T T.81), Matroska (RFC 9559).
constexpr TMark kMarks[] = {
    {BySndfile(VRL_L("WAV")), "RIFF"sv, 8, "WAVE"sv},
    {BySndfile(VRL_L("WAV (RIFX)")), "RIFX"sv, 8, "WAVE"sv},
    {BySndfile(VRL_L("RF64")), "RF64"sv, 8, "WAVE"sv},
    {BySndfile(VRL_L("BW64")), "BW64"sv, 8, "WAVE"sv},
    {BySndfile(VRL_L("Wave64")), "riff\x2E\x91\xCF\x11"sv},
    {BySndfile(VRL_L("AIFF")), "FORM"sv, 8, "AIFF"sv},
    {BySndfile(VRL_L("AIFF-C")), "FORM"sv, 8, "AIFC"sv},
    {BySndfile(VRL_L("AU")), ".snd"sv},
    {BySndfile(VRL_L("CAF")), "caff"sv},
    {BySndfile(VRL_L("FLAC")), "fLaC"sv},
    {BySndfile(VRL_L("Ogg Vorbis")), "OggS"sv, 28, "\x01vorbis"sv},
    {BySndfile(VRL_L("Ogg Opus")), "OggS"sv, 28, "OpusHead"sv},
    {BySndfile(VRL_L("Ogg FLAC")), "OggS"sv, 28,
     "\x7F"
     "FLAC"sv},
    {ByNobody(VRL_L("Ogg")), "OggS"sv},
    {BySystem(VRL_L("AAC")), "\xFF\xF1"sv},
    {BySystem(VRL_L("AAC")), "\xFF\xF9"sv},
    {BySndfile(VRL_L("MP3")), "ID3"sv},
    {BySndfile(VRL_L("MP3")), "\xFF\xFB"sv},
    {BySndfile(VRL_L("MP3")), "\xFF\xFA"sv},
    {BySndfile(VRL_L("MP3")), "\xFF\xF3"sv},
    {BySndfile(VRL_L("MP3")), "\xFF\xF2"sv},
    {BySystem(VRL_L("M4A")), {}, 4, "ftypM4A"sv},
    {BySystem(VRL_L("MP4")), {}, 4, "ftyp"sv},
    {ByImage(VRL_L("PNG")), "\x89PNG\r\n\x1A\n"sv},
    {ByImage(VRL_L("JPEG")), "\xFF\xD8\xFF"sv},
    {{VRL_L("YUV4MPEG2"), VRL_L("y4m"), VRL_L("y4m::CY4mDecoder")}, "YUV4MPEG2 "sv},
    {ByNobody(VRL_L("AVI")), "RIFF"sv, 8, "AVI "sv},
    {ByNobody(VRL_L("WebP")), "RIFF"sv, 8, "WEBP"sv},
    {ByNobody(VRL_L("Windows Media")), "\x30\x26\xB2\x75\x8E\x66\xCF\x11"sv},
    {ByNobody(VRL_L("Matroska")), "\x1A\x45\xDF\xA3"sv},
    {ByNobody(VRL_L("MIDI")), "MThd"sv},
    {ByNobody(VRL_L("GIF")), "GIF8"sv},
    {ByNobody(VRL_L("BMP")), "BM"sv, 6, "\0\0\0\0"sv},
    {ByNobody(VRL_L("ZIP")), "PK\x03\x04"sv},
    {ByNobody(VRL_L("gzip")), "\x1F\x8B\x08"sv},
    {ByNobody(VRL_L("PDF")), "%PDF-"sv},
};

bool HasAt(std::string_view head, std::size_t at, std::string_view mark) {
    return head.size() >= at && head.substr(at).starts_with(mark);
}

} // namespace

const TContainer* FindContainer(std::span<const std::uint8_t> head) {
    const std::string_view text(reinterpret_cast<const char*>(head.data()), head.size());
    for (const TMark& mark : kMarks) {
        if (HasAt(text, 0, mark.first) && HasAt(text, mark.at, mark.second)) return &mark.container;
    }
    return nullptr;
}

std::vector<TKnownContainer> ListKnownContainers() {
    std::vector<TKnownContainer> known;
    for (const TMark& mark : kMarks) {
        const TContainer& container = mark.container;
        const bool isThere = std::any_of(known.begin(), known.end(), [&](const TKnownContainer& other) {
            return other.name == container.name;
        });
        if (!isThere) known.push_back({container.name, container.plugin, container.decoder});
    }
    return known;
}

} // namespace vorlund
