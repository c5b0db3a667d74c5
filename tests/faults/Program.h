/// \file
/// The command-line program as a function: its sources are built into a library beside this program.
#pragma once

/// The `main` of the program.
int RunVorlundProgram(int argc, char** argv);
