#include "ConvertPlan.h"

#include "Diagnostics.h"
#include "FileNames.h"

#include <vorlund/Path.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>

using namespace vorlund;
namespace fs = std::filesystem;

namespace {

constexpr std::string_view kNamePart = "{name}";

wstring Quoted(const std::string& name) {
    return VRL_L("'") + PathFromUtf8(name.c_str()) + VRL_L("'");
}

/// An input, and where it lies below the folder that was named.
struct TFound {
    fs::path path;
    fs::path below;
    bool isFound = false;
};

std::vector<TFound> FindInputs(const std::vector<std::string>& inputs) {
    std::vector<TFound> found;
    for (const std::string& input : inputs) {
        const fs::path path = ToPath(input);
        std::error_code error;
        if (input == "-" || !fs::is_directory(path, error)) {
            found.push_back({path, path.filename(), false});
            continue;
        }
        std::vector<TFound> files;
        fs::recursive_directory_iterator entries(path, error);
        for (; !error && entries != fs::recursive_directory_iterator(); entries.increment(error)) {
            std::error_code none;
            if (entries->is_regular_file(none))
                files.push_back({entries->path(), entries->path().lexically_relative(path), true});
        }
        if (error) throw TProgramError{VRL_L("Cannot list the folder ") + Quoted(input)};
        // In an order of our own, because that of the system differs.
        std::sort(files.begin(), files.end(),
                  [](const TFound& one, const TFound& other) { return one.path < other.path; });
        found.insert(found.end(), files.begin(), files.end());
    }
    return found;
}

bool IsFolderName(const std::string& output) {
    std::error_code none;
    return output.ends_with('/') || output.ends_with(fs::path::preferred_separator) ||
           fs::is_directory(ToPath(output), none);
}

std::string MakeOutput(const TFound& input, const std::string& output, const TWrittenType& type) {
    const std::string stem = input.path == "-" ? "standard-input" : ToUtf8(input.path.stem());
    if (const std::size_t at = output.find(kNamePart); at != std::string::npos) {
        std::string name = output;
        return name.replace(at, kNamePart.size(), stem);
    }
    if (output == "-" || !IsFolderName(output)) return output;
    return ToUtf8(ToPath(output) / input.below.parent_path() / ToPath(stem + '.' + type.endings.front()));
}

} // namespace

const std::vector<TWrittenType>& GetWrittenTypes() {
    static const std::vector<TWrittenType> types{
        {"wav", {"wav", "wave", "bwf"}},
        {"aiff", {"aiff", "aif", "aifc"}},
        {"flac", {"flac"}},
        {"mp3", {"mp3"}},
        {"ogg", {"ogg", "oga"}},
        {"opus", {"opus"}},
    };
    return types;
}

const TWrittenType* FindTypeOfName(const std::string& name) {
    const std::string ending = GetEnding(name);
    for (const TWrittenType& type : GetWrittenTypes()) {
        for (const std::string& known : type.endings) {
            if (ending == known) return &type;
        }
    }
    return nullptr;
}

const TWrittenType* FindType(const std::string& name) {
    for (const TWrittenType& type : GetWrittenTypes()) {
        if (name == type.name) return &type;
    }
    return nullptr;
}

TConvertPlan MakeConvertPlan(const std::vector<std::string>& inputs, const std::string& output,
                             const std::string& type) {
    TConvertPlan plan;
    plan.type = type.empty() ? FindTypeOfName(output) : FindType(type);
    const bool isNamed =
        output != "-" && output.find(kNamePart) == std::string::npos && !IsFolderName(output);
    if (!plan.type && type.empty() && !isNamed) plan.type = &GetWrittenTypes().front();
    if (!plan.type)
        throw TProgramError{
            VRL_L("The name ") + Quoted(output) +
            VRL_L(" tells no type; end it in .wav, .aiff, .flac, .mp3, .ogg or .opus, or use --type")};
    const std::vector<TFound> found = FindInputs(inputs);
    if (found.empty()) throw TProgramError{VRL_L("There is no file to convert")};
    std::map<fs::path, fs::path> taken;
    for (const TFound& input : found) {
        TConvertJob job{.input = ToUtf8(input.path), .output = MakeOutput(input, output, *plan.type)};
        const auto [other, isNew] = taken.emplace(ToPath(job.output).lexically_normal(), input.path);
        if (!isNew)
            throw TProgramError{Quoted(ToUtf8(other->second)) + VRL_L(" and ") + Quoted(job.input) +
                                VRL_L(" would both become ") + Quoted(job.output) +
                                VRL_L("; name a folder, or a pattern with {name}")};
        std::error_code error;
        const std::uintmax_t size = fs::file_size(input.path, error);
        if (!error) job.size = size;
        job.isFound = input.isFound;
        job.isInFolder = IsFolderName(output);
        plan.jobs.push_back(std::move(job));
    }
    return plan;
}
