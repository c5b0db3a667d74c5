#include "cli/FailingReads.h"
#include "cli/ProgramFolder.h"

#include <cstdlib>

namespace vorlund::test {

// The function that reads is replaced by the one of failing_reads_posix.cpp.
TChildEnd RunWithFailingReads(std::vector<std::string> arguments, std::int64_t limit, bool isError) {
    const char* const options = std::getenv("ASAN_OPTIONS");
    const std::string former = options ? options : "";
    setenv("LD_PRELOAD", BesideProgram("failingreads/failing_reads.so").c_str(), 1);
    // The sanitizer wants to be the first library, but what comes before it here is nothing that it looks at.
    setenv("ASAN_OPTIONS", (former + ":verify_asan_link_order=0").c_str(), 1);
    setenv("VORLUND_TEST_READ_LIMIT", std::to_string(limit).c_str(), 1);
    setenv("VORLUND_TEST_READ_ERROR", isError ? "1" : "0", 1);
    TChildEnd end = RunProgramAlone({.arguments = std::move(arguments)});
    unsetenv("LD_PRELOAD");
    unsetenv("VORLUND_TEST_READ_LIMIT");
    unsetenv("VORLUND_TEST_READ_ERROR");
    if (options)
        setenv("ASAN_OPTIONS", former.c_str(), 1);
    else
        unsetenv("ASAN_OPTIONS");
    return end;
}

} // namespace vorlund::test
