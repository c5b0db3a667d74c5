// Texts of SDL, which are UTF-8.
#pragma once

#include <vorlund/Platform.h>

/// For people.
vorlund::wstring MakeText(const char* text);

/// `text` for an exception, which only points at its reason: in memory that lives until the plug-in is
/// unloaded. `otherwise` for an empty text, and when there have been very many different ones. Any thread.
const vorlund::wchar* KeepReason(const char* text, const vorlund::wchar* otherwise);
