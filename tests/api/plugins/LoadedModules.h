/// \file
/// What tests of plug-ins need of the system.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace vorlund::test {

/// How the names of plug-in files end, with the dot.
extern const char* const kPluginEnding;
/// The same of programs.
extern const char* const kProgramEnding;

/// Every so many-th damage of a plug-in is tried by a scan, which starts a process for each; a multiple
/// of 64.
extern const std::size_t kScanStep;

/// How many bytes of a shared library's image are its headers.
std::size_t GetHeaderSize(const std::string& image);

/// From now on a fault ends this process without a debugger or a box in between.
void EndProcessAtFaults();

/// Whether the shared library of that path is in the process.
bool IsInProcess(const std::filesystem::path& file);

/// Sets a variable of this process's environment, for the system's loader too.
void SetEnvironment(const char* name, const char* value);

} // namespace vorlund::test
