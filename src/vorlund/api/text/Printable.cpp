#include "vorlund/api/text/Printable.h"

#include "vorlund/api/text/Utf8.h"

namespace vorlund {
namespace {

/// Whether a unit of UTF-16 would control a terminal, or the direction of the text around it.
bool IsControl(wchar unit) {
    return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || (unit >= 0x2028 && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

} // namespace

wstring MakePrintable(wstring text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
            ++i;
        else if (IsControl(text[i]) || IsHighSurrogate(text[i]) || IsLowSurrogate(text[i]))
            text[i] = VRL_L('?');
    }
    return text;
}

} // namespace vorlund
