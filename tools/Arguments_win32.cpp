#include "Arguments.h"

#include <vorlund/Arguments.h>

std::vector<std::string> GetArguments(int argc, char** argv) {
    return vorlund::GetUtf8Arguments(argc, argv);
}
