#include "cli/FailingReads.h"
#include "cli/ProgramFolder.h"

#include <cstdlib>

namespace vorlund::test {

// The plug-in of failing_reads_win32.cpp replaces the function that reads.
TChildEnd RunWithFailingReads(std::vector<std::string> arguments, std::int64_t limit, bool isError) {
    _putenv_s("VORLUND_TEST_READ_LIMIT", std::to_string(limit).c_str());
    _putenv_s("VORLUND_TEST_READ_ERROR", isError ? "1" : "0");
    arguments.insert(arguments.begin(), {"--plugin-path", BesideProgram("failingreads").string()});
    TChildEnd end = RunProgramAlone({.arguments = std::move(arguments)});
    _putenv_s("VORLUND_TEST_READ_LIMIT", "");
    _putenv_s("VORLUND_TEST_READ_ERROR", "");
    std::erase(end.errors, '\r');
    return end;
}

} // namespace vorlund::test
