// Runs every test program of the kit that it lies in, on the machine of somebody who has no build tree, and
// writes report.txt and the folder logs beside the kit's folder bin. Arguments go to the two unit test
// programs.
#include "support/ChildProcess.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>
#include <windows.h>

namespace vorlund::test {
namespace {

namespace fs = std::filesystem;

/// A program that runs longer has hung.
constexpr std::chrono::minutes kMaxProgramTime{60};

FARPROC FindInSystem(const char* name) {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name);
}

/// The true version, which the documented call hides from programs without a manifest for it.
std::string GetSystemVersion() {
    RTL_OSVERSIONINFOW info{};
    info.dwOSVersionInfoSize = sizeof(info);
    using TGetVersion = LONG(WINAPI*)(RTL_OSVERSIONINFOW*);
    const auto getVersion =
        reinterpret_cast<TGetVersion>(reinterpret_cast<void*>(FindInSystem("RtlGetVersion")));
    if (!getVersion || getVersion(&info) != 0) return "unknown";
    return std::to_string(info.dwMajorVersion) + '.' + std::to_string(info.dwMinorVersion) + '.' +
           std::to_string(info.dwBuildNumber);
}

/// Wine with its version, or Windows.
std::string GetSystemKind() {
    using TGetWineVersion = const char*(__cdecl*)();
    const auto getVersion =
        reinterpret_cast<TGetWineVersion>(reinterpret_cast<void*>(FindInSystem("wine_get_version")));
    return getVersion ? std::string("Wine ") + getVersion() : "Windows";
}

std::string GetVariable(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "unknown";
}

std::vector<std::string> ReadLines(const fs::path& path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error("cannot read " + path.string());
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        std::erase(line, '\r');
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

/// The lines of GoogleTest that say how many cases passed and which failed.
std::vector<std::string> FindResults(const std::string& output) {
    std::vector<std::string> results;
    for (std::size_t at = 0; at < output.size();) {
        const std::size_t end = std::min(output.find('\n', at), output.size());
        std::string line = output.substr(at, end - at);
        std::erase(line, '\r');
        at = end + 1;
        // The list at the end names each failed case once more, without its time.
        const bool isFailedCase = line.starts_with("[  FAILED  ]") && !line.ends_with(" ms)");
        if (line.starts_with("[  PASSED  ]") || isFailedCase) results.push_back(line);
    }
    return results;
}

class CKit {
public:
    CKit() : root_(BesideProgram("").parent_path().parent_path()), report_(root_ / "report.txt") {
        fs::create_directories(root_ / "logs");
    }

    void WriteHead(const std::vector<std::string>& arguments) {
        Write("Vorlund test report");
        for (const std::string& line : ReadLines(root_ / "about.txt")) Write(line);
        Write("system: " + GetSystemKind());
        Write("system version: " + GetSystemVersion());
        Write("processor: " + GetVariable("PROCESSOR_IDENTIFIER") + ", " +
              GetVariable("NUMBER_OF_PROCESSORS") + " logical");
        std::string line = "arguments:";
        for (const std::string& argument : arguments) line += ' ' + argument;
        Write(line);
        Write("");
    }

    /// Runs `program` in `folder` of the kit.
    void Run(const std::string& name, const std::string& program, const std::vector<std::string>& arguments,
             const char* folder = ".") {
        fs::current_path(root_ / folder);
        const auto start = std::chrono::steady_clock::now();
        TChildEnd end;
        try {
            end = RunChild(program, {.arguments = arguments, .limit = kMaxProgramTime});
        } catch (const std::exception& exception) {
            end.exitCode = 1;
            end.errors = exception.what();
        }
        const auto seconds =
            std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start)
                .count();
        std::ofstream(root_ / "logs" / (name + ".txt"), std::ios::binary) << end.output << end.errors;

        ++(end.IsSuccess() ? passed_ : failed_);
        char code[32];
        std::snprintf(code, sizeof(code), "0x%X", end.exitCode);
        Write((end.IsSuccess() ? "passed " + name : "FAILED " + name + ", exit code " + code) +
              (end.hasTimedOut ? ", hung" : "") + ", " + std::to_string(seconds) + " s");
        for (const std::string& line : FindResults(end.output)) Write("    " + line);
    }

    int Finish() {
        Write("");
        Write(std::to_string(passed_) + " passed, " + std::to_string(failed_) + " failed");
        std::printf("The report is %s\n", (root_ / "report.txt").string().c_str());
        return failed_ == 0 && passed_ > 0 ? 0 : 1;
    }

    std::vector<std::string> ReadNames(const char* file) const { return ReadLines(root_ / file); }

private:
    /// To the report and to who looks on.
    void Write(const std::string& line) {
        report_ << line << std::endl;
        std::puts(line.c_str());
        std::fflush(stdout);
    }

    fs::path root_;
    std::ofstream report_;
    int passed_ = 0;
    int failed_ = 0;
};

int RunKit(const std::vector<std::string>& arguments) {
    CKit kit;
    kit.WriteHead(arguments);
    kit.Run("smoke", "vorlund_smoke", {"data/strings.wav"});
    kit.Run("windows-names", "vorlund_windows_names", {});
    kit.Run("vorlund_tests", "vorlund_tests", arguments);
    kit.Run("vorlund_internal_tests", "vorlund_internal_tests", arguments);
    for (const std::string& name : kit.ReadNames("fuzzers.txt"))
        kit.Run("corpus-" + name, "fuzz_" + name, {"corpus/" + name});
    for (const std::string& name : kit.ReadNames("examples.txt"))
        kit.Run("example-" + name, "example_" + name, {}, "data");
    return kit.Finish();
}

} // namespace
} // namespace vorlund::test

int main(int count, char** values) {
    try {
        return vorlund::test::RunKit({values + 1, values + count});
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "vorlund_test_report: %s\n", exception.what());
        return 2;
    }
}
