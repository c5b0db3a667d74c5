// What every command of the program supplies: its options, and the function that runs when it is chosen.
#pragma once

#include <functional>

namespace CLI {
class App;
}
class CDiagnostics;

/// The work of the chosen command. It runs with the library open; raises `TProgramError` and the library's
/// exceptions.
using TCommand = std::function<void(CDiagnostics&)>;

// Each adds its subcommand to the program. When the command line chooses it, `command` is set.
void AddDecodeCommand(CLI::App& program, TCommand& command);
void AddPlasmaCommand(CLI::App& program, TCommand& command);
void AddRandomCommand(CLI::App& program, TCommand& command);
void AddWindowCommand(CLI::App& program, TCommand& command);
