/// \file
/// Marks what leaks by contract.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace vorlund::test {

/// What the calling thread allocates while this lives may leak: LeakSanitizer does not report it.
class CExpectedLeak {
public:
#if defined(__SANITIZE_ADDRESS__)
    CExpectedLeak() {
        __lsan_disable();
    }
    ~CExpectedLeak() {
        __lsan_enable();
    }
#else
    CExpectedLeak() {}
    ~CExpectedLeak() {}
#endif
    CExpectedLeak(const CExpectedLeak&) = delete;
    CExpectedLeak& operator=(const CExpectedLeak&) = delete;
};

} // namespace vorlund::test
