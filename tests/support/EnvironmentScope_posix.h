/// \file
/// Another value of an environment variable.
#pragma once

#include <cstdlib>
#include <string>

namespace vorlund::test {

/// The variable for this process and those that it starts, for the length of a block.
class CEnvironmentScope {
public:
    CEnvironmentScope(const char* name, const char* value) : name_(name) {
        const char* const former = std::getenv(name);
        if (former) former_ = former;
        setenv(name, value, 1);
    }
    CEnvironmentScope(const CEnvironmentScope&) = delete;
    CEnvironmentScope& operator=(const CEnvironmentScope&) = delete;
    ~CEnvironmentScope() {
        if (former_.empty()) {
            unsetenv(name_);
        } else {
            setenv(name_, former_.c_str(), 1);
        }
    }

private:
    const char* const name_;
    std::string former_;
};

} // namespace vorlund::test
