// The command "tag".
#include "Commands.h"
#include "Diagnostics.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/WavMetadata.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string>
#include <utility>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::pair<const char*, std::string TWavBroadcast::*> kBroadcastTexts[] = {
    {"description", &TWavBroadcast::description},
    {"originator", &TWavBroadcast::originator},
    {"originator-reference", &TWavBroadcast::originatorReference},
    {"origination-date", &TWavBroadcast::originationDate},
    {"origination-time", &TWavBroadcast::originationTime},
    {"coding-history", &TWavBroadcast::codingHistory},
};
constexpr const char* kTimeReference = "time-reference";

/// A text of a file on a terminal: no control characters.
std::string MakeSafe(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char unit) { return unit < 0x20 || unit == 0x7F; }, ' ');
    return text;
}

void Print(const CDiagnostics& diagnostics, const std::string& label, const std::string& text) {
    if (!text.empty()) diagnostics.PrintField(label.c_str(), PathFromUtf8(MakeSafe(text).c_str()));
}

void Show(const TWavMetadata& metadata, const CDiagnostics& diagnostics) {
    for (const TWavInfoEntry& entry : metadata.info) Print(diagnostics, entry.id, entry.text);
    if (metadata.broadcast) {
        for (const auto& [name, text] : kBroadcastTexts)
            Print(diagnostics, name, (*metadata.broadcast).*text);
        Print(diagnostics, kTimeReference, std::to_string(metadata.broadcast->timeReference));
    }
    for (const TWavCuePoint& cue : metadata.cues) {
        std::string text = std::to_string(cue.position);
        if (cue.length > 0) text += "+" + std::to_string(cue.length);
        if (!cue.label.empty()) text += " " + cue.label;
        if (!cue.note.empty()) text += " (" + cue.note + ")";
        Print(diagnostics, "cue", text);
    }
}

TWavMetadata Read(const wstring& path) {
    const auto stream = CreateAs<IFileInputStream>(classid::CFileInputStream);
    stream->Open(path.c_str());
    return ReadWavMetadata(stream.Get());
}

void SetInfo(TWavMetadata& metadata, const std::string& id, const std::string& text) {
    const auto found = std::find_if(metadata.info.begin(), metadata.info.end(),
                                    [&id](const TWavInfoEntry& entry) { return entry.id == id; });
    if (found == metadata.info.end())
        metadata.info.push_back({id, text});
    else
        found->text = text;
}

void Set(TWavMetadata& metadata, const TTagChange& change) {
    for (const auto& [name, text] : kBroadcastTexts) {
        if (change.key != name) continue;
        if (!metadata.broadcast) metadata.broadcast.emplace();
        (*metadata.broadcast).*text = change.text;
        return;
    }
    if (change.key == kTimeReference) {
        if (!metadata.broadcast) metadata.broadcast.emplace();
        std::from_chars(change.text.data(), change.text.data() + change.text.size(),
                        metadata.broadcast->timeReference);
        return;
    }
    SetInfo(metadata, change.key, change.text);
}

void Remove(TWavMetadata& metadata, const std::string& key) {
    if (key == "bext") metadata.broadcast.reset();
    if (key == "cue") metadata.cues.clear();
    if (key == "INFO") metadata.info.clear();
    std::erase_if(metadata.info, [&key](const TWavInfoEntry& entry) { return entry.id == key; });
}

} // namespace

std::string CheckTagKey(const std::string& key) {
    const auto isIdCharacter = [](unsigned char unit) { return std::isupper(unit) || std::isdigit(unit); };
    if (key.size() == 4 && std::all_of(key.begin(), key.end(), isIdCharacter)) return "";
    const auto isKey = [&key](const auto& text) { return key == text.first; };
    if (key == kTimeReference || std::any_of(std::begin(kBroadcastTexts), std::end(kBroadcastTexts), isKey))
        return "";
    return "needs an id of INFO like INAM or IART, description, originator, originator-reference, "
           "origination-date, origination-time, time-reference or coding-history, not " +
           key;
}

std::string CheckTagChange(const std::string& text) {
    const std::size_t sign = text.find('=');
    if (sign == std::string::npos) return "needs KEY=TEXT, not " + text;
    const std::string key = text.substr(0, sign);
    if (key != kTimeReference) return CheckTagKey(key);
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data() + sign + 1, end, number);
    return error == std::errc() && next == end ? ""
                                               : "needs a number of frames, not " + text.substr(sign + 1);
}

void RunTag(const TTagOptions& options, const CDiagnostics& diagnostics) {
    const wstring path = PathFromUtf8(options.file.c_str());
    const auto fail = [&path](const wchar* job, const CException& error) {
        throw TProgramError{job + path + VRL_L("': ") + error.GetReason()};
    };
    try {
        TWavMetadata metadata = Read(path);
        if (!options.changes.empty() || !options.removed.empty()) {
            for (const std::string& key : options.removed) Remove(metadata, key);
            for (const TTagChange& change : options.changes) Set(metadata, change);
            EditWavMetadata(path.c_str(), metadata);
        }
    } catch (const CDataFormatException& error) {
        if (std::basic_string_view<wchar>(error.GetReason()) == VRL_L("The sizes of the chunks are wrong"))
            throw TProgramError{
                VRL_L("Cannot tag '") + path +
                VRL_L("': The sizes of its chunks are wrong; mend them with 'vorlund repair'")};
        fail(VRL_L("Cannot tag '"), error);
    } catch (const CInvalidParameterException& error) {
        fail(VRL_L("Cannot tag '"), error);
    } catch (const CIOException& error) {
        fail(VRL_L("Cannot tag '"), error);
    }
    Show(Read(path), diagnostics);
}
