// Names of files, in UTF-8, as paths of the standard library.
#pragma once

#include <filesystem>
#include <string>

std::filesystem::path ToPath(const std::string& name);
std::string ToUtf8(const std::filesystem::path& path);

/// What is behind the last dot of the last part, in small letters: "wav"; empty when there is none.
std::string GetEnding(const std::string& name);
