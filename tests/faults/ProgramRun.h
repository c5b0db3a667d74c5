/// \file
/// The program in a scenario.
#pragma once

#include "faults/Scenario.h"

#include <string>
#include <vector>

namespace vorlund::faults {

/// What the program does with the file that it writes.
enum class TOutputUse {
    Made,    ///< there is none before, nor after a run that fails
    Begun,   ///< there is none before, and a run that fails may leave what it has written up to then
    Changed, ///< it is there before
};

/// Runs the program. The file that it writes goes into the result; `output` names it, or is empty. Raises
/// `TBroken` for what the program must not do, whatever fails.
void RunProgram(CResult& result, const std::vector<std::string>& words, const std::string& output,
                TOutputUse use = TOutputUse::Made);

/// The path of a file of the scenarios.
std::string InFolder(const char* name);

} // namespace vorlund::faults
