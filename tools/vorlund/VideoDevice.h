// The device that shows what the program shows.
#pragma once

#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/VideoOutput.h>

/// The first one that is registered. Raises `TProgramError` when there is none.
vorlund::CRefPtr<vorlund::IVideoOutput> MakeVideoOutput();

/// Raises `TProgramError` when it shows no surface, and what it raises.
void OpenVideoOutput(vorlund::IVideoOutput& output, const vorlund::TDataFormat_VideoRgb& format,
                     const vorlund::wstring& title);
