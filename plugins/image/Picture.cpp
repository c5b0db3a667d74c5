#include "Picture.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/Exception.h>

#include <string>
#include <string_view>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/image/Picture");
constexpr const wchar* kConnect = VRL_L("CImageDecoder::Connect");

constexpr TFailure kTooLarge{kConnect, kFile, 1, VRL_L("Picture is too large")};
constexpr TFailure kNotHeld{kConnect, kFile, 2, VRL_L("Picture is larger than its file can hold")};

wstring Widened(std::string_view text) {
    return {text.begin(), text.end()};
}

[[noreturn]] void Refuse(const TFailure& failure, std::uint32_t width, std::uint32_t height) {
    NoteValue(VRL_L("width"), width);
    NoteValue(VRL_L("height"), height);
    Raise<CDataFormatException>(failure);
}

} // namespace

void RequirePossibleSize(std::uint32_t width, std::uint32_t height) {
    if (std::uint64_t{width} * height > kMaxPixels) Refuse(kTooLarge, width, height);
}

void RequireHeldSize(std::uint32_t width, std::uint32_t height, std::uint64_t needed, std::int64_t length) {
    if (std::uint64_t{width} * height <= kMaxUnprovenPixels) return;
    if (length < 0 || needed > static_cast<std::uint64_t>(length)) Refuse(kNotHeld, width, height);
}

void NoteObjection(const char* library, const char* text) {
    NoteValue(Widened(library).c_str(), Widened(text).c_str());
}

void NoteRepair(const char* library, const char* text) {
    NoteRemark(Widened(std::string(library) + ": " + text).c_str());
}
