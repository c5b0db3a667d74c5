#include "vorlund/api/text/Utf8.h"
#include "vorlund/data/file/PathCodec_posix.h"

#include <vorlund/Path.h>

namespace vorlund {
namespace {

/// `path` with U+FFFD for what no file name can hold.
wstring Encodable(const wchar* path) {
    wstring text(path);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            ++i;
        } else if (IsHighSurrogate(text[i]) || (IsLowSurrogate(text[i]) && !pathcodec::IsEscape(text[i]))) {
            text[i] = 0xFFFD;
        }
    }
    return text;
}

} // namespace

wstring PathFromUtf8(const char* path) {
    return path ? pathcodec::Decode(path) : wstring();
}

std::string PathToUtf8(const wchar* path) {
    std::string bytes;
    if (path && !pathcodec::Encode(path, bytes)) pathcodec::Encode(Encodable(path).c_str(), bytes);
    return bytes;
}

} // namespace vorlund
