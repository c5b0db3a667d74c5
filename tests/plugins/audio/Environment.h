/// \file
/// Environment variables, as SDL reads them.
#pragma once

#include <map>
#include <string>

namespace vorlund::test {

/// The variable gets another value, or goes with an empty one.
void SetEnvironment(const std::string& name, const std::string& value);

/// Variables for the length of a block in which nobody else reads them; before, they were not set.
class CEnvironment {
public:
    explicit CEnvironment(std::map<std::string, std::string> variables) : variables_(std::move(variables)) {
        for (const auto& [name, value] : variables_) SetEnvironment(name, value);
    }
    CEnvironment(const CEnvironment&) = delete;
    CEnvironment& operator=(const CEnvironment&) = delete;
    ~CEnvironment() {
        for (const auto& [name, value] : variables_) SetEnvironment(name, {});
    }

private:
    const std::map<std::string, std::string> variables_;
};

} // namespace vorlund::test
