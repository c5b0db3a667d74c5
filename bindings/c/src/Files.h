// Files of the file system as streams.
#pragma once

#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

namespace vorlund::capi {

/// Opens a file, one at a time in the process: the reason of a failure is in one buffer of the process, and
/// is recorded for the thread before another one follows. Raises `CRecorded`, and what is no failure of the
/// library's.
CRefPtr<IInputStream> OpenInputFile(const wstring& path);
CRefPtr<IOutputStream> OpenOutputFile(const wstring& path);

} // namespace vorlund::capi
