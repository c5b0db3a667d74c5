#include "FileNames.h"

#include <algorithm>
#include <cctype>

namespace fs = std::filesystem;

fs::path ToPath(const std::string& name) {
    return {std::u8string(name.begin(), name.end())};
}

std::string ToUtf8(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::string GetEnding(const std::string& name) {
    std::string ending = ToUtf8(ToPath(name).extension());
    if (!ending.empty()) ending.erase(0, 1);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char unit) { return static_cast<char>(std::tolower(unit)); });
    return ending;
}
