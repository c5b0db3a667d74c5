// Texts in and out, in UTF-8 and UTF-16.
#pragma once

#include "Failure.h"

#include <vorlund/Path.h>
#include <vorlund/String.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vorlund::capi {

/// How many bytes of a UTF-8 text fit into `room` without half a character at the end.
std::size_t WholeCharacters(std::string_view text, std::size_t room);

/// A text that is given to a function. Raises for null.
wstring TakeText(const char* text);
wstring TakeText(const std::uint16_t* text);
/// The same, null for the empty text.
template <class TUnit> wstring TakeTextOrNone(const TUnit* text) {
    return text ? TakeText(text) : wstring();
}

/// The name of a file, whose bytes need not be UTF-8 where the system does not ask for that.
wstring TakePath(const char* path);
wstring TakePath(const std::uint16_t* path);

/// Puts a text into the caller's buffer, by the rules of base.h.
void GiveText(std::string_view text, char* buffer, std::uint32_t room, std::uint32_t* length);
void GiveText(std::string_view text, std::uint16_t* buffer, std::uint32_t room, std::uint32_t* length);
void GiveText(std::basic_string_view<wchar> text, char* buffer, std::uint32_t room, std::uint32_t* length);
void GiveText(std::basic_string_view<wchar> text, std::uint16_t* buffer, std::uint32_t room,
              std::uint32_t* length);

/// The same for the texts of the library.
template <class TUnit>
void GiveText(const wchar* text, TUnit* buffer, std::uint32_t room, std::uint32_t* length) {
    GiveText(text ? std::basic_string_view<wchar>(text) : std::basic_string_view<wchar>(), buffer, room,
             length);
}
template <class TUnit>
void GiveText(const CString& text, TUnit* buffer, std::uint32_t room, std::uint32_t* length) {
    GiveText(static_cast<const wchar*>(text), buffer, room, length);
}

} // namespace vorlund::capi
