// The commands and options of the program. This header brings the templates of the parser, which take longer
// to compile than the rest of the program: few files include it.
#pragma once

#include "CommandLine.h"

#include <CLI/CLI.hpp>

/// Parses into the `TCommandLine` of its constructor, which must outlive it.
class CCommandParser {
public:
    explicit CCommandParser(TCommandLine& line);
    CCommandParser(const CCommandParser&) = delete;
    CCommandParser& operator=(const CCommandParser&) = delete;
    ~CCommandParser() = default;

    CLI::App app;
    /// Set by the options of these names.
    bool isVersion = false;
    bool isVerbose = false;
};
