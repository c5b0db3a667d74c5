/// \file
/// Another display, or none, for this process and those that it starts. Only on POSIX.
#pragma once

#include "support/EnvironmentScope_posix.h"

namespace vorlund::test {

/// The environment variable DISPLAY with another value.
class CDisplayScope : public CEnvironmentScope {
public:
    explicit CDisplayScope(const char* display) : CEnvironmentScope("DISPLAY", display) {}
};

} // namespace vorlund::test
