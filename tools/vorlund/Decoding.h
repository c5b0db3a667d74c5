// The search for decoders, here or in a process without rights.
#pragma once

#include <vorlund/DecodeReport.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamSelector.h>

#include <string>
#include <vector>

/// From now on decoders run apart, with the plug-ins of these folders, UTF-8, and unless `areOthersForgotten`
/// those that come with the library.
void IsolateDecoders(const std::vector<std::string>& folders, bool areOthersForgotten);

/// The source, decoded to `format`. Raises what the search raises.
vorlund::CRefPtr<vorlund::IInputStream> DecodeSource(const vorlund::CInputStreamSelector& source,
                                                     const vorlund::CId& format,
                                                     vorlund::CDecodeReport& report);

/// Raises `TProgramError` when the file below `stream` could not be read; `path` is its name.
void CheckReading(vorlund::IInputStream& stream, const vorlund::wstring& path);
