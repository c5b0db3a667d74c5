// What the command line says.
#pragma once

#include <functional>
#include <string>
#include <vector>

class CDiagnostics;

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

struct TCommandLine {
    /// Folders, UTF-8.
    std::vector<std::string> pluginPaths;
    /// Each plug-in is tried in a process of its own first.
    bool arePluginsScanned = false;
    /// Only the folders of `pluginPaths` are searched.
    bool areFoldersForgotten = false;
    /// Decoders run in a process without rights.
    bool areDecodersIsolated = false;
    /// The command shows something, which takes the plug-in of a device.
    bool needsDevices = false;
    /// The command tells itself what became of the plug-ins.
    bool isListing = false;
    /// The chosen command. It runs with the library open; raises `TProgramError` and the library's
    /// exceptions. Empty: everything is said, and the program ends with `exitCode`.
    std::function<void(CDiagnostics&)> command;
    int exitCode = 0;
};

/// Reads the arguments (UTF-8, without the program's name). Prints the help, the version, or what is wrong.
TCommandLine ReadCommandLine(const std::vector<std::string>& arguments);
