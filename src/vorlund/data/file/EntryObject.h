// Objects of files and folders for entries that may vanish at any time.
#pragma once

#include "vorlund/data/file/FileSystem.h"

#include <vorlund/Exception.h>

namespace vorlund::filesystem {

/// True when nothing of kind `kind` is at `path` any more. An entry about which the system does not tell has
/// not gone: its initialisation may say why.
inline bool HasVanished(const wchar* path, TEntryKind kind) {
    const TEntryKind now = GetKind(path);
    return now != kind && now != TEntryKind::Unknown;
}

/// Initialises a file or folder object with `path`. False when the entry has vanished since somebody saw it;
/// every other failure passes on. Ask `HasVanished` before: an exception reaches the debugger output even
/// when it is caught here.
template <class TEntry> bool InitializeIfThere(TEntry& entry, const wchar* path, TEntryKind kind) {
    try {
        entry.Initialize(path);
    } catch (const CFileAccessException&) {
        if (!HasVanished(path, kind)) throw;
        return false;
    }
    return true;
}

} // namespace vorlund::filesystem
