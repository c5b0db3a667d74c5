/// \file
/// What an isolated process cannot do.
#pragma once

#include <string>

namespace vorlund::test {

/// Tries each thing and tells what came of it, as "name error", separated by blanks. "0" for what was
/// possible.
std::string AttemptWhatIsForbidden();

} // namespace vorlund::test
