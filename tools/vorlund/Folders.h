// Folders and files by their names, as the program needs them beside the library's own.
#pragma once

#include <vorlund/Platform.h>

#include <string>

/// Whether a path of the library names a folder.
bool IsFolder(const vorlund::wchar* path);

/// Whether a path, UTF-8, names a file that can be read from its beginning.
bool IsFile(const std::string& path);

/// Adds a folder, UTF-8, to those where plug-ins are looked for, unless it is one of them already, under
/// whatever name. What is no folder is not added, and a line on the standard error stream says so.
void AddPluginFolder(const std::string& path);
