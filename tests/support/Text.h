/// \file
/// UTF-16 text as narrow text, so that comparisons in tests print something readable when they fail.
#pragma once

#include <vorlund/Platform.h>

#include <string>
#include <string_view>

namespace vorlund::test {

/// `text` in UTF-8. A lone surrogate becomes the three bytes that UTF-8 would give it, so different texts
/// never become equal.
std::string Narrow(std::basic_string_view<wchar> text);

/// The same for zero-terminated text; a null pointer gives `<null>`.
std::string Narrow(const wchar* text);

/// The same for a standard-library wide string.
inline std::string Narrow(const wstring& text) {
    return Narrow(std::basic_string_view<wchar>(text));
}

} // namespace vorlund::test
