/// \file
/// Runs of the program that get no memory.
#pragma once

#include "support/ChildProcess.h"

#include <string>
#include <vector>

namespace vorlund::test {

/// The numbers behind this one are tried here and there, where processes take long to start.
int GetLastOfEveryRefusal();

/// Runs the program. The allocation `number`, from 1 on, is refused, and all that follow it unless `isOnce`.
TChildEnd RunWithRefusedMemory(std::vector<std::string> arguments, int number, bool isOnce);

} // namespace vorlund::test
