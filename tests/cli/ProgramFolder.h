/// \file
/// The program as its users see it: a folder of the test's own, and runs of the program.
#pragma once

#include "support/ChildProcess.h"
#include "support/Streams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vorlund::test {

/// Runs the program without the plug-ins that the build puts beside the library.
inline TChildEnd RunProgramAlone(TChildOptions options) {
    options.arguments.insert(options.arguments.begin(), "--no-plugins");
    return RunChild("vorlund", options);
}

/// A folder of the test's own.
class CProgramFolder : public testing::Test {
protected:
    CProgramFolder() {
        namespace fs = std::filesystem;
        const auto* const info = testing::UnitTest::GetInstance()->current_test_info();
        folder_ = fs::temp_directory_path() /
                  (std::string("vorlund-cli-") + info->test_suite_name() + "-" + info->name());
        fs::remove_all(folder_);
        fs::create_directories(folder_);
    }
    ~CProgramFolder() override { std::filesystem::remove_all(folder_); }

    std::string At(const std::string& name) const { return (folder_ / name).string(); }

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

    static TChildEnd Run(std::vector<std::string> arguments) {
        TChildEnd end = RunProgramAlone({.arguments = std::move(arguments)});
        std::erase(end.errors, '\r');
        return end;
    }

    /// Runs the program with arguments that it refuses: exit code `code`, one line, no output.
    void ExpectRefused(const std::vector<std::string>& arguments, unsigned int code) const {
        const TChildEnd end = Run(arguments);
        EXPECT_EQ(end.exitCode, code) << arguments.back();
        EXPECT_EQ(end.output, "") << arguments.back();
        EXPECT_EQ(end.errors.rfind("vorlund: ", 0), 0U) << end.errors;
        EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1) << end.errors;
        EXPECT_EQ(List(), std::vector<std::string>()) << arguments.back();
    }

    std::filesystem::path folder_;
};

} // namespace vorlund::test
