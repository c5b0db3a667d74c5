// Where the plug-in says what it repaired, and what a file lacks.
#pragma once

#include <string_view>

/// One remark on the file that is being opened or read, in ASCII. Goes to the debugger output, and while the
/// decoder connects to the report of the search.
void Note(std::string_view text);

/// Why libsndfile refuses the file, in ASCII, to the report of the search.
void NoteRefusal(std::string_view text);
