#include "Y4mHeader.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <charconv>
#include <iterator>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/y4m/Y4mHeader");
constexpr const wchar* kConnect = VRL_L("CY4mDecoder::Connect");
constexpr TFailure kInvalid{kConnect, kFile, 1, VRL_L("Invalid YUV4MPEG2 header")};
constexpr TFailure kColours{kConnect, kFile, 2, VRL_L("Unsupported colour space")};
constexpr TFailure kTooLarge{kConnect, kFile, 3, VRL_L("Frame is too large")};

/// Where the chroma samples lie between the pixels, in which the first ones differ, makes no difference here.
constexpr TY4mLayout kLayouts[] = {
    {.name = "420jpeg", .chromaShiftX = 1, .chromaShiftY = 1},
    {.name = "420mpeg2", .chromaShiftX = 1, .chromaShiftY = 1},
    {.name = "420paldv", .chromaShiftX = 1, .chromaShiftY = 1},
    {.name = "420", .chromaShiftX = 1, .chromaShiftY = 1},
    {.name = "411", .chromaShiftX = 2},
    {.name = "422", .chromaShiftX = 1},
    {.name = "444"},
    {.name = "444alpha", .hasAlpha = true},
    {.name = "mono", .hasChroma = false},
};

/// What players take for a rate that is not known.
constexpr float kUnknownRate = 25;

wstring Widened(std::string_view text) {
    return {text.begin(), text.end()};
}

[[noreturn]] void RefuseParameter(std::string_view parameter) {
    NoteValue(VRL_L("parameter"), Widened(parameter).c_str());
    Raise<CDataFormatException>(kInvalid);
}

/// The decimal number that `text` is, at most 2^31-1; false for anything else.
bool ParseNumber(std::string_view text, std::uint32_t& number) {
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && next == end && number <= 0x7FFFFFFF;
}

std::uint32_t ParseSide(std::string_view parameter) {
    std::uint32_t side = 0;
    if (!ParseNumber(parameter.substr(1), side) || side == 0) RefuseParameter(parameter);
    return side;
}

/// "F30000:1001"
float ParseRate(std::string_view parameter) {
    const std::size_t colon = parameter.find(':');
    std::uint32_t frames = 0;
    std::uint32_t seconds = 0;
    if (colon == std::string_view::npos || !ParseNumber(parameter.substr(1, colon - 1), frames) ||
        !ParseNumber(parameter.substr(colon + 1), seconds))
        RefuseParameter(parameter);
    if (frames > 0 && seconds > 0) return static_cast<float>(static_cast<double>(frames) / seconds);
    NoteRemark(VRL_L("frame rate unknown, taken for 25"));
    return kUnknownRate;
}

TY4mLayout FindLayout(std::string_view name) {
    const auto* const layout = std::find_if(std::begin(kLayouts), std::end(kLayouts),
                                            [name](const TY4mLayout& row) { return row.name == name; });
    if (layout == std::end(kLayouts)) {
        NoteValue(VRL_L("colour space"), Widened(name).c_str());
        Raise<CDataFormatException>(kColours);
    }
    return *layout;
}

void ParseParameter(std::string_view parameter, TY4mHeader& header) {
    switch (parameter.front()) {
    case 'W':
        header.width = ParseSide(parameter);
        break;
    case 'H':
        header.height = ParseSide(parameter);
        break;
    case 'F':
        header.frameRate = ParseRate(parameter);
        break;
    case 'C':
        header.layout = FindLayout(parameter.substr(1));
        break;
    case 'I':
        header.isInterlaced = parameter != "Ip" && parameter != "I?";
        break;
    case 'X':
        if (parameter == "XCOLORRANGE=FULL") header.isFullRange = true;
        break;
    default:
        // The shape of the pixels, and what others have added.
        break;
    }
}

} // namespace

std::uint32_t TY4mHeader::GetChromaWidth() const {
    return (width + (1u << layout.chromaShiftX) - 1) >> layout.chromaShiftX;
}

std::uint32_t TY4mHeader::GetChromaHeight() const {
    return (height + (1u << layout.chromaShiftY) - 1) >> layout.chromaShiftY;
}

std::uint64_t TY4mHeader::GetFrameSize() const {
    const std::uint64_t chroma = std::uint64_t{GetChromaWidth()} * GetChromaHeight();
    return GetPixels() * (layout.hasAlpha ? 2 : 1) + (layout.hasChroma ? 2 * chroma : 0);
}

TY4mHeader ParseY4mHeader(std::string_view line) {
    TY4mHeader header;
    header.layout = kLayouts[0];
    line.remove_prefix(kY4mSignature.size());
    while (!line.empty()) {
        const std::size_t size = std::min(line.find(' '), line.size());
        if (size > 0) ParseParameter(line.substr(0, size), header);
        line.remove_prefix(std::min(size + 1, line.size()));
    }
    if (header.width == 0) RefuseParameter("W");
    if (header.height == 0) RefuseParameter("H");
    if (header.frameRate == 0) header.frameRate = ParseRate("F0:0");
    if (header.GetPixels() > kMaxY4mPixels) {
        NoteValue(VRL_L("width"), header.width);
        NoteValue(VRL_L("height"), header.height);
        Raise<CDataFormatException>(kTooLarge);
    }
    return header;
}
