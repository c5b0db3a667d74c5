#include <vorlund/Arguments.h>

namespace vorlund {

std::vector<std::string> GetUtf8Arguments(int argc, const char* const* argv) {
    if (argc < 2) return {};
    return {argv + 1, argv + argc};
}

} // namespace vorlund
