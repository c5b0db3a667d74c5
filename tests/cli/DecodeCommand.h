/// \file
/// What the tests of "vorlund decode" share.
#pragma once

#include "support/ChildProcess.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace vorlund::test {

inline std::string WithoutReturns(std::string text) {
    std::erase(text, '\r');
    return text;
}

/// Runs "vorlund decode" on files in a folder of the test's own.
class DecodeCommand : public testing::Test {
protected:
    DecodeCommand() {
        const auto* const info = testing::UnitTest::GetInstance()->current_test_info();
        folder_ = std::filesystem::temp_directory_path() / (std::string("vorlund-cli-") + info->name());
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
    }
    ~DecodeCommand() override { std::filesystem::remove_all(folder_); }

    std::string At(const std::string& name) const { return (folder_ / name).string(); }

    std::string Make(const std::string& name, const TBytes& bytes) const {
        std::ofstream(At(name), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return At(name);
    }
    std::string Make(const std::string& name, const std::string& text) const {
        return Make(name, TBytes(text.begin(), text.end()));
    }

    TBytes Load(const std::string& name) const {
        std::ifstream file(At(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Names of everything in the folder, sorted.
    std::vector<std::string> List() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    static TChildEnd Decode(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "decode");
        TChildEnd end = RunChild("vorlund", {.arguments = std::move(arguments)});
        end.errors = WithoutReturns(end.errors);
        return end;
    }

    std::filesystem::path folder_;
};

} // namespace vorlund::test
