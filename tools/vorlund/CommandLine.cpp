#include "CommandLine.h"

#include "CommandParser.h"
#include "Folders.h"
#include "Listings.h"
#include "Suggestion.h"

#include <vorlund/Version.h>

#include <algorithm>
#include <cstdio>

namespace {

bool Has(const std::vector<std::string>& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

std::vector<std::string> GetCommands(const CLI::App& program) {
    std::vector<std::string> names;
    for (const CLI::App* const command : program.get_subcommands({})) names.push_back(command->get_name());
    return names;
}

/// The options of a command, or of the program, without their dashes.
void AddOptionNames(const CLI::App& command, std::vector<std::string>& names) {
    for (const CLI::Option* const option : command.get_options())
        names.insert(names.end(), option->get_lnames().begin(), option->get_lnames().end());
}

/// The first word that is no option, where the command should be.
std::vector<std::string>::iterator FindCommand(std::vector<std::string>& words) {
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (*word == "--plugin-path") {
            if (++word == words.end()) break;
        } else if (!word->starts_with('-')) {
            return word;
        }
    }
    return words.end();
}

std::string Ask(const std::string& suggestion) {
    return suggestion.empty() ? "; " : "; did you mean '" + suggestion + "'? ";
}

std::string NoOption(const std::string& word) {
    return "There is no option '" + word + "'";
}

/// What is wrong, where it is a word that does not exist; empty for other faults.
std::string FindUnknownWord(const CLI::App& program, std::vector<std::string>& words) {
    const std::vector<std::string> commands = GetCommands(program);
    const auto command = FindCommand(words);
    if (command != words.end() && !Has(commands, *command))
        return "There is no command and no file '" + *command + "'" +
               Ask(FindSuggestion(*command, commands)) + "--help lists the commands";
    for (const std::string& word : program.remaining(true)) {
        if (word.size() < 2 || word[0] != '-' || word == "--") continue;
        if (word[1] != '-')
            return NoOption(word) + "; a file of that name is './" + word + "'; --help tells the options";
        std::vector<std::string> options;
        AddOptionNames(program, options);
        for (const CLI::App* const chosen : program.get_subcommands()) AddOptionNames(*chosen, options);
        const std::string nearest = FindSuggestion(word.substr(2, word.find('=') - 2), options);
        return NoOption(word) + Ask(nearest.empty() ? nearest : "--" + nearest) + "--help tells the options";
    }
    return {};
}

} // namespace

TCommandLine ReadCommandLine(const std::vector<std::string>& arguments) {
    TCommandLine line;
    CCommandParser parser(line);
    CLI::App& app = parser.app;
    std::vector<std::string> words = arguments;
    const auto command = FindCommand(words);
    if (command != words.end() && !Has(GetCommands(app), *command) && IsFile(*command))
        words.insert(command, "decode");
    try {
        // The parser takes the arguments last first.
        app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
        if (!parser.isVersion && !line.command) throw CLI::RequiredError::Subcommand(1);
    } catch (const CLI::ParseError& error) {
        line.command = nullptr;
        const std::string unknown = error.get_exit_code() == 0 ? "" : FindUnknownWord(app, words);
        if (unknown.empty()) {
            line.exitCode = app.exit(error) == 0 ? 0 : kExitUsage;
        } else {
            std::fprintf(stderr, "vorlund: %s\n", unknown.c_str());
            line.exitCode = kExitUsage;
        }
        return line;
    }
    if (!parser.isVersion) return line;
    line.command = nullptr;
    line.isListing = true;
    if (parser.isVerbose)
        line.command = [](CDiagnostics&) { RunVersion(); };
    else
        std::printf("vorlund %s\n", vorlund::GetVersion().text);
    return line;
}
