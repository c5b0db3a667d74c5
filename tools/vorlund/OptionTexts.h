// What options of the command line say, and what is wrong with them: nothing for texts that are right.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// The parser's own conversion takes -1, and numbers that are too large, for very large ones.
std::string CheckCount(const std::string& text);

std::string CheckSize(const std::string& text);
std::string CheckVideoName(const std::string& name);

/// A number of seconds, or "minutes:seconds", or with hours before them; nothing for other texts.
std::optional<double> ParseTime(const std::string& text);
std::string CheckTime(const std::string& text);

/// How often a list is played, 0 for "endless"; nothing for other texts.
std::optional<std::uint64_t> ParseRounds(const std::string& text);
std::string CheckRounds(const std::string& text);

/// Recordings are WAV files.
std::string CheckRecording(const std::string& name);
