#include "OptionTexts.h"

#include "Commands.h"
#include "ConvertPlan.h"

#include <charconv>
#include <string_view>
#include <system_error>

namespace {

constexpr const char* kEndless = "endless";

} // namespace

std::string CheckCount(const std::string& text) {
    std::uint64_t count = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, count);
    return error == std::errc() && next == end ? "" : "needs a number of bytes, not " + text;
}

std::string CheckSize(const std::string& text) {
    return ParseVideoSize(text) ? "" : "needs a size like 640x480, at most 16384x16384, not " + text;
}

std::string CheckVideoName(const std::string& name) {
    return name == "-" || IsPngName(name) || IsY4mName(name)
               ? ""
               : "needs a name that ends in .png or .y4m, not " + name;
}

std::optional<double> ParseTime(const std::string& text) {
    double time = 0;
    const char* at = text.data();
    const char* const end = at + text.size();
    for (int parts = 0; parts < 3; ++parts) {
        double part = 0;
        const auto [next, error] = std::from_chars(at, end, part);
        if (error != std::errc() || !(part >= 0 && part < 1e9)) return {};
        time = time * 60 + part;
        if (next == end) return time;
        if (*next != ':') return {};
        at = next + 1;
    }
    return {};
}

std::string CheckTime(const std::string& text) {
    return ParseTime(text) ? "" : "needs a time like 90, 1:30 or 0:01:30.5, not " + text;
}

std::optional<std::uint64_t> ParseRounds(const std::string& text) {
    if (text == kEndless) return 0;
    std::uint64_t count = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, count);
    return error == std::errc() && next == end && count > 0 ? std::optional(count) : std::nullopt;
}

std::string CheckRounds(const std::string& text) {
    return ParseRounds(text) ? "" : "needs a number of rounds, not " + text;
}

std::string CheckRecording(const std::string& name) {
    const TWrittenType* const type = FindTypeOfName(name);
    return !type || std::string_view(type->name) == "wav"
               ? ""
               : "needs a name that ends in .wav ('vorlund convert' makes other files of it), not " + name;
}
