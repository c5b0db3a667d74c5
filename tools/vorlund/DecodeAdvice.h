// Opens sound, and says what to do about a file that has none.
#pragma once

#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamSelector.h>

/// The source, decoded to audio PCM. Raises `TProgramError`, which says why not and what helps, and what
/// reading the source raises. `path` is its name.
vorlund::CRefPtr<vorlund::IInputStream> OpenDecoded(const vorlund::CInputStreamSelector& source,
                                                    const vorlund::wstring& path);
