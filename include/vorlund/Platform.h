/// \file
/// The one place in the public headers that knows the operating system: the UTF-16 unit, its literal form and
/// the export mark. Everything else is the same declaration on every system.
#pragma once

#include <cstdint>
#include <string>

#if defined(_WIN32)
/// Marks a UTF-16 literal: `VRL_L("text")`.
#define VRL_L(text) L##text
/// Marks the entry points of a plug-in (Plugin.h); on Windows the module definition exports them.
#define VRL_PLUGIN_ENTRY
#if defined(VORLUND_STATIC)
#define VRL_API
#elif defined(VORLUND_BUILDING)
#define VRL_API __declspec(dllexport)
#else
/// Marks what the shared library exports.
#define VRL_API __declspec(dllimport)
#endif
namespace vorlund {
/// A UTF-16 unit. On Windows this is the system's own wide character.
using wchar = wchar_t;
} // namespace vorlund
#else
#define VRL_L(text) u##text
#define VRL_API __attribute__((visibility("default")))
#define VRL_PLUGIN_ENTRY __attribute__((visibility("default")))
namespace vorlund {
using wchar = char16_t;
} // namespace vorlund
#endif

namespace vorlund {
/// A standard-library wide string of UTF-16 units.
using wstring = std::basic_string<wchar>;
static_assert(sizeof(wchar) == 2);
} // namespace vorlund
