// Objects of files and folders for entries that may vanish at any time.
#pragma once

#include "vorlund/data/file/FileSystem.h"

#include <vorlund/Exception.h>

namespace vorlund::filesystem {

/// How often an object is initialised with an entry that is there before, but not in time.
constexpr int kMaxAttempts = 3;

/// Initialises a file or folder object with `path`. False when the entry has vanished since somebody saw it,
/// cannot be reached, or vanishes and returns at every attempt: one entry must not lose the others. Failures
/// other than `CFileAccessException` pass on.
template <class TEntry> bool InitializeIfThere(TEntry& entry, const wchar* path, TEntryKind kind) {
    // Asked first each time: an exception reaches the debugger output even when it is caught here.
    for (int attempt = 0; attempt < kMaxAttempts && GetKind(path) == kind; ++attempt) {
        try {
            entry.Initialize(path);
            return true;
        } catch (const CFileAccessException&) {
            // Looked at again.
        }
    }
    return false;
}

} // namespace vorlund::filesystem
