// The exit codes of docs/exit-codes.md, each provoked by the example of its row, and no command without the
// rows of all three.
#include "cli/DecodeCommand.h"
#include "support/WavBuilder.h"

#include <cstdlib>
#include <map>
#include <set>
#include <sstream>

namespace vorlund::test {
namespace {

struct TExitRow {
    std::string command;
    unsigned int code = 0;
    /// Behind "vorlund".
    std::vector<std::string> words = {};
    bool isOutputRefused = false;
};

std::string Unquoted(const std::string& text) {
    const std::size_t first = text.find('`');
    const std::size_t last = text.rfind('`');
    return first < last ? text.substr(first + 1, last - first - 1) : text;
}

/// The rows of the page's last table.
std::vector<TExitRow> ReadExitRows() {
    std::ifstream page(BesideProgram("exit-codes.md"));
    std::vector<TExitRow> rows;
    for (std::string line; std::getline(page, line);) {
        if (!line.starts_with("| `")) continue;
        std::vector<std::string> cells;
        std::istringstream text(line);
        for (std::string cell; std::getline(text, cell, '|');) cells.push_back(cell);
        if (cells.size() < 5) continue;
        TExitRow row{.command = Unquoted(cells[1]), .code = static_cast<unsigned int>(std::stoul(cells[2]))};
        std::istringstream words(Unquoted(cells[4]));
        std::string word;
        words >> word;
        EXPECT_EQ(word, "vorlund") << line;
        while (words >> word && word != ">") row.words.push_back(word);
        row.isOutputRefused = word == ">";
        rows.push_back(std::move(row));
    }
    return rows;
}

/// Whether a line says what failed; a warning does not.
bool TellsOfFailure(const std::string& errors) {
    std::istringstream lines(errors);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("vorlund: ") && !line.starts_with("vorlund: warning: ")) return true;
    }
    return false;
}

class ExitCodes : public DecodeCommand {
protected:
    ExitCodes() : before_(std::filesystem::current_path()) { std::filesystem::current_path(folder_); }
    ~ExitCodes() override { std::filesystem::current_path(before_); }

    void MakeInputs() const {
        for (const auto& entry : std::filesystem::directory_iterator(folder_))
            std::filesystem::remove_all(entry);
        Make("sound.wav", PlainWav({}, Ramp(4000)));
        Make("cut.wav", CWavBuilder().Format({}).Declare("data", 0, Ramp(4000)).Build());
        Make("words.txt", std::string("no sound in here, only words"));
    }

    static bool IsShown(const TExitRow& row) { return row.command == "window" && row.code == 0; }

    /// Whether there is a display, and the plug-in that shows windows.
    static bool CanShow() {
        const bool isWindows = sizeof(wchar_t) == 2;
        return (isWindows || std::getenv("DISPLAY")) &&
               exists(BesideProgram("vorlund-plugins") /
                      (isWindows ? "window-output.dll" : "window-output.so"));
    }

private:
    std::filesystem::path before_;
};

TEST_F(ExitCodes, EveryRowOfThePageIsTrue) {
    const std::vector<TExitRow> rows = ReadExitRows();
    ASSERT_GT(rows.size(), 40u);
    for (const TExitRow& row : rows) {
        if (IsShown(row) && !CanShow()) continue;
        MakeInputs();
        const TChildOptions options{.arguments = row.words,
                                    .output = row.isOutputRefused ? TChildOutput::Refusing
                                                                  : TChildOutput::Captured};
        const TChildEnd end = IsShown(row) ? RunChild("vorlund", options) : RunProgramAlone(options);
        std::string line = "vorlund";
        for (const std::string& word : row.words) line += " " + word;
        EXPECT_EQ(end.exitCode, row.code) << line << '\n' << end.errors;
        EXPECT_EQ(end.signal, 0) << line;
        EXPECT_EQ(TellsOfFailure(end.errors), row.code != 0) << line << '\n' << end.errors;
        if (row.code == 2) {
            EXPECT_EQ(List(), (std::vector<std::string>{"cut.wav", "sound.wav", "words.txt"})) << line;
        }
    }
}

/// The names of the commands as the help lists them.
std::set<std::string> ListCommands() {
    const TChildEnd end = RunProgramAlone({.arguments = {"--help"}});
    const std::size_t begin = end.output.find("Subcommands:");
    std::istringstream lines(end.output.substr(std::min(begin, end.output.size())));
    std::set<std::string> commands;
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line) && line.starts_with("  ")) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        commands.insert(word);
    }
    return commands;
}

TEST_F(ExitCodes, ThePageHasEveryCodeOfEveryCommand) {
    std::set<std::string> expected = ListCommands();
    ASSERT_GT(expected.size(), 10u);
    expected.insert("vorlund");
    std::map<std::string, std::set<unsigned int>> codes;
    for (const TExitRow& row : ReadExitRows()) {
        codes[row.command].insert(row.code);
        if (row.command != "vorlund") {
            EXPECT_EQ(row.words.front(), row.command);
        }
    }
    std::set<std::string> listed;
    for (const auto& [command, found] : codes) {
        listed.insert(command);
        EXPECT_EQ(found, (std::set<unsigned int>{0, 1, 2})) << command;
    }
    EXPECT_EQ(listed, expected);
}

} // namespace
} // namespace vorlund::test
