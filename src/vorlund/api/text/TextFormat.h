/// \file
/// The library's own printf for UTF-16 text, with the same results on every system.
///
/// The C runtimes disagree about wide formats: what `%s` takes, how `%p` looks, what happens to a text that
/// does not fit. And where the UTF-16 unit is not the system's `wchar_t`, they have no such function.
#pragma once

#include <vorlund/Platform.h>

#include <cstdarg>
#include <cstddef>

namespace vorlund {

/// Formats into `buffer`, which has room for `capacity` units. A text that does not fit is cut; the result is
/// always terminated, unless `capacity` is 0. Returns the number of units written, without the terminator.
///
/// Flags `-` `+` space `#` `0`, width and precision (both may be `*`), lengths `h` `hh` `l` `ll` `I64` `I32`
/// `I` `w` `z` `t` `j` `L`, conversions `d i u o x X c C s S p e E f F g G a A %` as in C, with these rules:
/// - `%s` and `%c` take wide text; `%S`, `%hs`, `%C` and `%hc` take narrow text, widened byte by byte with
///   sign extension; `l` and `w` always mean wide. A null text prints as "(null)".
/// - Numbers with a fraction have a ".", in every locale.
/// - `%p` prints all digits of the address, in upper case and without a prefix.
/// - `%n` takes its argument, writes nothing to it and prints nothing.
/// - From an unknown conversion on, the rest of the format is printed unchanged.
///
/// Never raises and never allocates. A number with more than 1500 characters keeps the first 1500.
int FormatText(wchar* buffer, std::size_t capacity, const wchar* format, std::va_list arguments);

/// The same with the arguments of the call.
int FormatArguments(wchar* buffer, std::size_t capacity, const wchar* format, ...);

} // namespace vorlund
