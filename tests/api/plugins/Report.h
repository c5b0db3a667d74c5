/// \file
/// How the plug-ins of the tests tell what happens to them.
#pragma once

#include <vorlund/Debug.h>
#include <vorlund/Exception.h>
#include <vorlund/Plugin.h>

namespace vorlund::test {

inline void Report(const char* event, const char* plugin) {
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("%S %S"), event, plugin);
}

} // namespace vorlund::test
