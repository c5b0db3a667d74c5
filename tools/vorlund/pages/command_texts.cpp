// Prints the command line of the program as JSON: the commands, their options, values and helps. The manual
// pages and the completions are made of it (scripts/program_pages.py). It is not installed.
#include "../CommandParser.h"
#include "../JsonWriter.h"

#include <vorlund/Version.h>

#include <cstdio>

namespace {

void WriteTexts(CJsonWriter& json, const char* key, const std::vector<std::string>& texts) {
    json.Key(key).BeginArray();
    for (const std::string& text : texts) json.Text(text.c_str());
    json.EndArray();
}

/// The values that an option takes, of its description "{a,b}"; none for other descriptions.
std::vector<std::string> GetChoices(const std::string& checks) {
    std::vector<std::string> choices;
    const std::size_t open = checks.find('{');
    if (open == std::string::npos) return choices;
    std::size_t begin = open + 1;
    const std::size_t close = checks.find('}', begin);
    while (begin < close) {
        const std::size_t end = std::min(checks.find(',', begin), close);
        choices.push_back(checks.substr(begin, end - begin));
        begin = end + 1;
    }
    return choices;
}

void WriteOption(CJsonWriter& json, const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
    // "NAME:check:check"
    const std::string type = option.get_type_name();
    const std::size_t colon = std::min(type.find(':'), type.size());
    const bool takesValue = option.get_type_size() > 0;
    json.BeginObject();
    WriteTexts(json, "names", names);
    json.Key("argument").Text(names.empty() ? option.get_name(true).c_str() : "");
    json.Key("value").Text(takesValue ? type.substr(0, colon).c_str() : "");
    json.Key("checks").Text(type.substr(colon).c_str());
    WriteTexts(json, "choices", GetChoices(type));
    json.Key("help").Text(option.get_description().c_str());
    json.Key("required").Flag(option.get_required());
    json.Key("repeated").Flag(option.get_items_expected_max() > 1);
    json.EndObject();
}

void WriteCommand(CJsonWriter& json, const CLI::App& command) {
    json.BeginObject();
    json.Key("name").Text(command.get_name().c_str());
    json.Key("help").Text(command.get_description().c_str());
    json.Key("footer").Text(command.get_footer().c_str());
    json.Key("options").BeginArray();
    for (const CLI::Option* const option : command.get_options()) WriteOption(json, *option);
    json.EndArray();
    json.EndObject();
}

} // namespace

int main() {
    TCommandLine line;
    const CCommandParser parser(line);
    CJsonWriter json;
    json.BeginObject();
    json.Key("version").Text(vorlund::GetVersion().text);
    json.Key("commands").BeginArray();
    WriteCommand(json, parser.app);
    for (const CLI::App* const command : parser.app.get_subcommands({})) WriteCommand(json, *command);
    json.EndArray();
    json.EndObject();
    std::fputs(json.Finish().c_str(), stdout);
    return 0;
}
