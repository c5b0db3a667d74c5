/// \file
/// What the tests of the command "decode" share.
#pragma once

#include "cli/ProgramFolder.h"
#include "support/WavBuilder.h"

#include <string>
#include <utility>
#include <vector>

namespace vorlund::test {

inline std::string WithoutReturns(std::string text) {
    std::erase(text, '\r');
    return text;
}

/// Runs "vorlund decode" on files in a folder of the test's own.
class DecodeCommand : public CProgramFolder {
protected:
    std::string Make(const std::string& name, const TBytes& bytes) const {
        std::ofstream(At(name), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return At(name);
    }
    std::string Make(const std::string& name, const std::string& text) const {
        return Make(name, TBytes(text.begin(), text.end()));
    }

    static TChildEnd Decode(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "decode");
        return Run(std::move(arguments));
    }
};

} // namespace vorlund::test
