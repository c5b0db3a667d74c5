// Makes every call of the library fail that the system may refuse, one after the other, in one scenario after
// the other, and looks whether nothing crashes, hangs or is lost, and whether the next run is as usual.
//
//     vorlund_faults [--quick] [WORD...]                    all scenarios, or those whose name has one of the
//     words vorlund_faults --child SCENARIO KIND N SPAN FOLDER [--only] [--quick]
//                                                           from one point on, in this process: KIND as its
//                                                           name
//     vorlund_faults --imports                              what the library imports and nobody has looked at
//
// Each scenario runs in a child process, so that a crash or a hang is one fault among others.
#include "faults/ProcessHandles.h"
#include "faults/Session.h"

#include "support/ChildProcess.h"
#include "support/DebugRecorder.h"
#include "support/EndProcess.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <thread>

namespace vorlund::faults {
namespace {

/// Nothing that a scenario does takes so long.
constexpr std::chrono::seconds kHangLimit{60};
/// For all points of a scenario.
constexpr std::chrono::seconds kScenarioLimit{3600};
constexpr int kHangCode = 99;
constexpr int kMaxRestarts = 40;
constexpr int kMaxShownFaults = 4;

std::FILE* report = stdout;
std::atomic<unsigned int> reported = 0;

std::size_t FindName(const auto& names, const std::string& name) {
    for (std::size_t i = 0; i < names.size(); ++i)
        if (name == names[i]) return i;
    std::fprintf(stderr, "vorlund_faults: what is '%s'?\n", name.c_str());
    std::exit(2);
}

const TScenario& FindScenario(const std::string& name) {
    for (const TScenario& scenario : GetScenarios())
        if (name == scenario.name) return scenario;
    std::fprintf(stderr, "vorlund_faults: there is no scenario '%s'\n", name.c_str());
    std::exit(2);
}

/// Ends the process when no point follows the last one in time.
void WatchForHangs() {
    std::thread([] {
        unsigned int seen = reported;
        auto since = std::chrono::steady_clock::now();
        for (;;) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            const auto now = std::chrono::steady_clock::now();
            if (const unsigned int current = reported; current != seen) {
                seen = current;
                since = now;
            } else if (now - since > kHangLimit) {
                if (HasFailed()) std::fprintf(stderr, "the call came from %s\n", DescribeFault().c_str());
                test::EndProcess(kHangCode);
            }
        }
    }).detach();
}

int RunAsChild(const std::vector<std::string>& arguments) {
    const TScenario& scenario = FindScenario(arguments.at(0));
    TPoint first;
    first.kind = FindName(kKindNames, arguments.at(1));
    first.n = static_cast<unsigned int>(std::stoul(arguments.at(2)));
    first.span = FindName(kSpanNames, arguments.at(3));
    const std::filesystem::path folder = arguments.at(4);
    const auto has = [&](const char* option) {
        return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
    };
    test::SilenceDebugMessages();
    PrepareFiles(folder, test::BesideProgram(""));
    report = SplitReport((folder / "stdout").string());
    WatchForHangs();
    InstallHooks();
    RunSession(scenario, first, has("--only") ? first.kind : kKindCount, has("--quick"));
    Report("end");
    return 0;
}

/// What came of one scenario with one kind of call.
struct TRow {
    unsigned int points = 0;
    unsigned int calls = 0;
    std::vector<std::string> faults;
    std::string note;
};

class CParent {
public:
    explicit CParent(bool isQuick) : isQuick_(isQuick) {}
    CParent(const CParent&) = delete;
    CParent& operator=(const CParent&) = delete;
    ~CParent() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    void Run(const TScenario& scenario) {
        rows_.assign(kKindCount, {});
        TPoint next;
        for (int i = 0; i < kMaxRestarts && RunFrom(scenario, next); ++i) {
        }
        for (std::size_t kind = 0; kind < kKindCount; ++kind) Print(scenario, kind);
    }

    int Finish() const {
        std::printf("%u fault points\n%u passed, %u failed\n", points_, passed_, failed_);
        return failed_ == 0 && passed_ > 0 ? 0 : 1;
    }

private:
    /// Returns true when the child ended too early, with where to go on in `next`.
    bool RunFrom(const TScenario& scenario, TPoint& next) {
        const auto folder = folder_ / scenario.name;
        test::TChildOptions options;
        options.arguments = {"--child",
                             scenario.name,
                             kKindNames[next.kind],
                             std::to_string(next.n),
                             kSpanNames[next.span],
                             folder.string()};
        if (isQuick_) options.arguments.push_back("--quick");
        options.limit = kScenarioLimit;
        const test::TChildEnd end =
            test::RunChild(scenario.hasPlugins ? "faultshost/vorlund_faults" : "vorlund_faults", options);
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
        TPoint last = next;
        bool isWhole = false;
        hasBegun_ = false;
        std::istringstream lines(end.output);
        for (std::string line; std::getline(lines, line);) isWhole = Take(line, last) || isWhole;
        if (isWhole && end.IsSuccess()) return false;

        std::string what = "the process ends with code " + std::to_string(end.exitCode);
        if (end.signal) what = "the process ends by signal " + std::to_string(end.signal);
        if (end.exitCode == kHangCode) what = "nothing happens for a minute";
        if (end.hasTimedOut) what = "the scenario does not end";
        what += ": " + end.errors.substr(0, 3000);
        rows_[last.kind].faults.push_back(std::to_string(last.n) + " " + kSpanNames[last.span] + " " + what);
        rows_[last.kind].points = std::max(rows_[last.kind].points, 1u);
        if (isWhole || end.hasTimedOut || !hasBegun_) return false;
        next = last;
        if (++next.span == kSpanNames.size()) {
            next.span = 0;
            ++next.n;
        }
        return true;
    }

    /// Takes a line of the report; true for the last.
    bool Take(const std::string& line, TPoint& last) {
        std::istringstream words(line);
        std::string word;
        std::string kindName;
        words >> word >> kindName;
        if (word == "end") return true;
        if (word != "calls" && word != "point" && word != "fault" && word != "done" && word != "other")
            return false;
        const std::size_t kind = FindName(kKindNames, kindName);
        TRow& row = rows_[kind];
        if (word == "calls") {
            words >> row.calls;
            last = {kind, last.kind == kind ? last.n : 1, last.kind == kind ? last.span : 0};
        } else if (word == "point") {
            std::string span;
            words >> last.n >> span;
            last.kind = kind;
            last.span = FindName(kSpanNames, span);
            ++row.points;
            hasBegun_ = true;
        } else if (word == "fault") {
            std::string text;
            std::getline(words >> std::ws, text);
            row.points = std::max(row.points, 1u);
            row.faults.push_back(text);
        } else if (word == "done") {
            unsigned int raised = 0;
            unsigned int same = 0;
            unsigned int other = 0;
            words >> raised >> same >> other;
            row.note = std::to_string(raised) + " raise, " + std::to_string(same) + " go on, " +
                       std::to_string(other) + " give another result";
        } else if (std::getenv("VORLUND_FAULTS_OTHERS")) {
            std::printf("    %s\n", line.c_str());
        }
        return false;
    }

    void Print(const TScenario& scenario, std::size_t kind) {
        const TRow& row = rows_[kind];
        points_ += row.points;
        if (row.points == 0) return;
        ++(row.faults.empty() ? passed_ : failed_);
        std::printf("%-6s %-24s %-7s %5u calls %6u points  %s\n", row.faults.empty() ? "ok" : "FAILED",
                    scenario.name, kKindNames[kind], row.calls, row.points, row.note.c_str());
        for (std::size_t i = 0; i < row.faults.size(); ++i) {
            if (i == kMaxShownFaults && !std::getenv("VORLUND_FAULTS_OTHERS")) {
                std::printf("       and %zu more\n", row.faults.size() - i);
                break;
            }
            std::printf("       %s\n", row.faults[i].c_str());
        }
        std::fflush(stdout);
    }

    const bool isQuick_;
    /// One of its own, as other runs may be under way.
    const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("vorlund-faults-" + std::to_string(std::random_device{}()));
    /// Whether the last child has come to a point.
    bool hasBegun_ = false;
    std::vector<TRow> rows_;
    unsigned int points_ = 0;
    unsigned int passed_ = 0;
    unsigned int failed_ = 0;
};

int PrintUnknownImports() {
    const std::vector<std::string> imports = FindUnknownImports();
    for (const std::string& import : imports)
        std::printf("nobody has looked at the import %s\n", import.c_str());
    std::printf("%zu imports to look at\n", imports.size());
    return imports.empty() ? 0 : 1;
}

int RunAll(std::vector<std::string> words) {
    const bool isQuick = std::erase(words, "--quick") > 0;
    CParent parent(isQuick);
    for (const TScenario& scenario : GetScenarios()) {
        const bool isWanted =
            words.empty() || std::any_of(words.begin(), words.end(), [&](const std::string& word) {
                return std::strstr(scenario.name, word.c_str()) != nullptr;
            });
        if (isWanted) parent.Run(scenario);
    }
    return parent.Finish();
}

} // namespace

void Report(const char* format, ...) {
    std::va_list list;
    va_start(list, format);
    std::vfprintf(report, format, list);
    va_end(list);
    std::fputc('\n', report);
    std::fflush(report);
    ++reported;
}

} // namespace vorlund::faults

int main(int argc, char** argv) {
    using namespace vorlund::faults;
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (!arguments.empty() && arguments[0] == "--imports") return PrintUnknownImports();
    if (arguments.size() < 6 || arguments[0] != "--child") return RunAll(arguments);
    arguments.erase(arguments.begin());
    return RunAsChild(arguments);
}
