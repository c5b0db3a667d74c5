// Who may change the folder of a plug-in. A port supplies this in a file PluginFolder_<system>.cpp.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund::pluginfolder {

/// Whether others than the user of this process and the superuser may put files into the folder, or exchange
/// it or a folder above it. Raises `std::bad_alloc`.
///
/// On POSIX, links followed: whether the folder may be written by its group or by everybody, one above it may
/// be so without the sticky bit, which protects the entries of others, or one of them belongs to somebody
/// else. On Windows nothing is looked at, and the answer is always no. What an access list allows depends on
/// the groups of users, on what is inherited and on privileges, and the folders that programs are installed
/// in by hand let every user of the machine create files by default: a warning would come for most of them,
/// and a missing one would promise what was not found out.
bool IsOpenToOthers(const wchar* folder);

} // namespace vorlund::pluginfolder
