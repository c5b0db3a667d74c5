// Texts that come from the tables of plug-ins and from their calls.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund::tables {

/// The most bytes of a text that are read.
inline constexpr int kMaxText = 255;

/// The text of UTF-8, for people: at most `kMaxText` bytes of it, with "?" for what would control a terminal.
/// Null gives the empty text. Raises `std::bad_alloc`.
wstring ReadText(const char* text);

} // namespace vorlund::tables
