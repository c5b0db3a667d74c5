#include "Arguments.h"

std::vector<std::string> GetArguments(int argc, char** argv) {
    return {argv + 1, argv + argc};
}
