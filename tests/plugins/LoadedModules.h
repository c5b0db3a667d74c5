/// \file
/// What tests of plug-ins need of the system.
#pragma once

#include <filesystem>

namespace vorlund::test {

/// How the names of plug-in files end, with the dot.
extern const char* const kPluginEnding;

/// Whether the shared library of that path is in the process.
bool IsInProcess(const std::filesystem::path& file);

} // namespace vorlund::test
