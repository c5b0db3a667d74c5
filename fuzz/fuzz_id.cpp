/// \file
/// `CId`'s parser and printer against a model written with strings.
#include "FuzzInput.h"

#include <vorlund/Id.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using vorlund::fuzz::Check;

/// The text form by the rule itself: digits in order, upper-case, filled up with zeros, the rest cut.
std::string ModelText(const std::string& text) {
    std::string digits;
    for (const char c : text)
        if (static_cast<unsigned char>(c) < 0x80 && std::isxdigit(static_cast<unsigned char>(c)))
            digits += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    digits.resize(32, '0');
    return '{' + digits.substr(0, 8) + ',' + digits.substr(8, 8) + ',' + digits.substr(16, 8) + ',' +
           digits.substr(24, 8) + '}';
}

std::string Text(const vorlund::CId& id) {
    std::string text;
    for (const vorlund::wchar unit : id.ToString()) text += static_cast<char>(unit);
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string narrow = bytes.c_str();
    const vorlund::CId id(narrow.c_str());
    Check(Text(id) == ModelText(narrow));
    Check(vorlund::CId(id.ToString().c_str()) == id);

    // The same bytes as wide text: each pair is a unit, so units beyond the bytes appear too.
    vorlund::wstring wide;
    std::string low;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        const auto unit = static_cast<vorlund::wchar>(data[i] | data[i + 1] << 8);
        if (!unit) break;
        wide += unit;
        low += unit < 0x80 ? static_cast<char>(unit) : ' ';
    }
    const vorlund::CId other(wide.c_str());
    Check(Text(other) == ModelText(low));

    // The order of identifiers is the order of their text forms.
    Check((id < other) == (Text(id) < Text(other)));
    Check((id == other) == (Text(id) == Text(other)));
    return 0;
}
