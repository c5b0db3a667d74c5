// The command "plugins".
#include "Folders.h"
#include "JsonWriter.h"
#include "Listings.h"
#include "PluginTexts.h"
#include "Table.h"

#include <vorlund/Exception.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <iterator>

using namespace vorlund;

namespace {

/// By the number of the outcome; for scripts.
constexpr const char* kOutcomes[] = {
    "begun",        "loaded",      "no-plugin",      "not-loadable", "no-entry",
    "declined",     "raised",      "scan-no-helper", "scan-died",    "scan-too-late",
    "scan-garbled", "folder-open", "other-machine",  "cut",          "missing-library",
    "incompatible", "bad-table",
};
static_assert(std::size(kOutcomes) == PLUGIN_BAD_TABLE + 1);

/// By the number of the kind.
constexpr const char* kKinds[] = {"class", "decoder", "encoder", "device"};
static_assert(std::size(kKinds) == PLUGIN_ITEM_DEVICE + 1);

/// "1 class, 2 decoders".
wstring CountItems(const TPluginReport& report) {
    wstring text;
    for (std::size_t kind = 0; kind < std::size(kKinds); ++kind) {
        const auto count = std::count_if(report.items.begin(), report.items.end(), [&](const auto& item) {
            return static_cast<std::size_t>(item.kind) == kind;
        });
        if (count == 0) continue;
        std::string part = std::to_string(count) + " " + kKinds[kind];
        if (count > 1) part += kind == PLUGIN_ITEM_CLASS ? "es" : "s";
        if (!text.empty()) text += VRL_L(", ");
        text.append(part.begin(), part.end());
    }
    return text;
}

/// What came of it, and what it brings.
wstring Describe(const TPluginReport& report) {
    wstring text = report.Explain().GetBuffer();
    if (report.loads > 1) {
        const std::string times = std::to_string(report.loads);
        text += VRL_L(" ") + wstring(times.begin(), times.end()) + VRL_L(" times");
    }
    const wstring items = CountItems(report);
    if (!items.empty()) text += VRL_L(": ") + items;
    return text;
}

void WriteReport(CJsonWriter& json, const TPluginReport& report) {
    json.BeginObject().Key("path").Text(report.path).Key("name").Text(GetPluginTitle(report).c_str());
    json.Key("outcome").Text(kOutcomes[report.outcome]).Key("code").Number(report.code);
    json.Key("text").Text(report.Explain()).Key("detail").Text(report.detail);
    json.Key("exception");
    if (report.exceptionMethod.Length() > 0) {
        const wchar* const type = CException::GetTypeName(report.exceptionType);
        json.BeginObject().Key("type").Text(type ? type : VRL_L("CException"));
        json.Key("method").Text(report.exceptionMethod).EndObject();
    } else {
        json.Null();
    }
    json.Key("record");
    if (report.hasInfo) {
        json.BeginObject().Key("name").Text(report.name).Key("version").Text(report.version);
        json.Key("licence").Text(report.licence).Key("libraryVersion").Number(report.libraryVersion);
        json.EndObject();
    } else {
        json.Null();
    }
    json.Key("libraries").Text(report.libraries).Key("loads").Number(report.loads);
    json.Key("items").BeginArray();
    for (const TPluginItem& item : report.items) {
        json.BeginObject().Key("kind").Text(kKinds[item.kind]).Key("class").Text(item.name);
        json.Key("id").Text(item.classId.ToString().c_str()).EndObject();
    }
    json.EndArray().EndObject();
}

} // namespace

void RunPlugins(const TListOptions& options) {
    const CPluginStore& store = v.GetPluginStore();
    CJsonWriter json;
    json.BeginObject().Key("folders").BeginArray();
    std::vector<TRow> folders{{VRL_L("Folder"), VRL_L("State")}};
    for (unsigned int i = 0; i < store.GetPluginPathCount(); ++i) {
        const CString path = store.GetPluginPath(i);
        const bool isThere = IsFolder(path);
        folders.push_back({path.GetBuffer(), isThere ? VRL_L("searched") : VRL_L("not there")});
        json.BeginObject().Key("path").Text(path).Key("exists").Flag(isThere).EndObject();
    }
    json.EndArray().Key("plugins").BeginArray();
    std::vector<TRow> files{
        {VRL_L("Plug-in"), VRL_L("Version"), VRL_L("Licence"), VRL_L("State"), VRL_L("File")}};
    std::vector<TRow> others{{VRL_L("Other file"), VRL_L("State")}};
    for (const TPluginReport& report : GetFileReports()) {
        WriteReport(json, report);
        if (report.outcome == PLUGIN_NO_PLUGIN)
            others.push_back({report.path.GetBuffer(), Describe(report)});
        else
            files.push_back({GetPluginTitle(report), report.version.GetBuffer(), report.licence.GetBuffer(),
                             Describe(report), report.path.GetBuffer()});
    }
    json.EndArray().EndObject();
    if (options.isJson) return PrintJson(json);
    PrintTable(folders);
    PrintLine({});
    if (files.size() > 1)
        PrintTable(files);
    else
        PrintLine(VRL_L("There is no plug-in in these folders; --plugin-path names another one"));
    if (others.size() == 1) return;
    PrintLine({});
    PrintTable(others);
}
