/// \file
/// Another display, or none, for this process and those that it starts. Only on POSIX.
#pragma once

#include <cstdlib>
#include <string>

namespace vorlund::test {

/// The environment variable DISPLAY with another value.
class CDisplayScope {
public:
    explicit CDisplayScope(const char* display) {
        const char* const former = std::getenv("DISPLAY");
        if (former) former_ = former;
        setenv("DISPLAY", display, 1);
    }
    CDisplayScope(const CDisplayScope&) = delete;
    CDisplayScope& operator=(const CDisplayScope&) = delete;
    ~CDisplayScope() {
        if (former_.empty()) {
            unsetenv("DISPLAY");
        } else {
            setenv("DISPLAY", former_.c_str(), 1);
        }
    }

private:
    std::string former_;
};

} // namespace vorlund::test
