// The rules of paths as text: pure functions that look at no file system and raise nothing but
// std::bad_alloc. Where no separator is given it is "/"; a name is what is between two of them.
#pragma once

#include <vorlund/String.h>

namespace vorlund::pathtext {

/// `path` with every "\" turned into "/".
CString WithForwardSlashes(const wchar* path);

/// The same, ending in "/".
CString AsFolder(const wchar* path);

/// The path of `name` in `folder`, with one `separator` between them.
CString Join(const wchar* folder, const wchar* name, wchar separator);

/// `folder` without the `separator` that it may end in; a root stays one.
CString WithoutSeparator(const wchar* folder, wchar separator);

/// What follows the last "/"; all of `path` without one.
CString GetName(const wchar* path);

/// Up to and including the last "/"; "./" without one.
CString GetFolder(const wchar* path);

/// The last name of a path that may end in "/".
CString GetFolderName(const wchar* path);

/// `name` up to its last "."; all of it without one.
CString GetTitle(const wchar* name);

/// What follows the last "." of `name`; empty without one.
CString GetExtension(const wchar* name);

} // namespace vorlund::pathtext
