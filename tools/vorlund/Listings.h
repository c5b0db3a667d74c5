// The commands that list what there is. Each runs with the library open and prints a table for people, or
// JSON for scripts, whose keys stay the same; docs/listings.md describes them.
#pragma once

struct TListOptions {
    bool isJson = false;
};

/// Every class that objects can be made of.
void RunClasses(const TListOptions& options);

/// Decoders, encoders, devices, and the kinds of files with who reads them.
void RunCodecs(const TListOptions& options);

/// What plays and records sound.
void RunDevices(const TListOptions& options);

/// The folders that are searched, and every file in them that has the name of a plug-in.
void RunPlugins(const TListOptions& options);

/// The version of the library; with the plug-ins, the libraries that they use and the build.
void RunVersion();

class CJsonWriter;

/// Prints a whole document on the standard output. Raises `TProgramError` when that takes less.
void PrintJson(const CJsonWriter& json);
