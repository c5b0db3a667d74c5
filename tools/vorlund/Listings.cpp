#include "Listings.h"

#include "Diagnostics.h"
#include "JsonWriter.h"
#include "PluginTexts.h"
#include "Table.h"
#include "Terminal.h"

#include <vorlund/ObjectEnumerator.h>
#include <vorlund/Path.h>
#include <vorlund/PtrObject.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Version.h>
#include <vorlund/Vorlund.h>

#include <cstdio>

using namespace vorlund;

namespace {

wstring FromAscii(const std::string& text) {
    return {text.begin(), text.end()};
}

} // namespace

void PrintJson(const CJsonWriter& json) {
    const std::string text = json.Finish();
    // What the system refuses marks the stream, and the program asks for that at its end.
    std::fwrite(text.data(), 1, text.size(), GetBinaryOutput());
}

void RunClasses(const TListOptions& options) {
    const std::vector<TPluginReport> reports = GetFileReports();
    std::vector<TRow> rows{{VRL_L("Class"), VRL_L("From"), VRL_L("Identifier")}};
    CJsonWriter json;
    json.BeginObject().Key("classes").BeginArray();
    const auto classes = CRefPtr<IObjectEnumerator>::Adopt(v.GetClassStore().EnumerateClasses());
    while (classes->HasNext()) {
        const auto item = CRefPtr<IObject>::Adopt(classes->GetNext()).Query<IPtrObject>();
        const auto& info = *static_cast<const TClassInfo*>(item->GetPtr());
        const wchar* const name = info.name ? info.name : VRL_L("");
        const wstring id = info.id.ToString();
        const TPluginReport* const bringer = FindBringer(reports, PLUGIN_ITEM_CLASS, info.id);
        rows.push_back({name, DescribeBringer(bringer), id});
        json.BeginObject().Key("name").Text(name).Key("id").Text(id.c_str());
        json.Key("creatable").Flag(info.factory != nullptr).Key("plugin");
        bringer ? json.Text(bringer->path) : json.Null();
        json.EndObject();
    }
    json.EndArray().EndObject();
    if (options.isJson) return PrintJson(json);
    PrintTable(rows);
}

void RunVersion() {
    PrintLine(VRL_L("vorlund ") + FromAscii(GetVersion().text));
    PrintLine(FromAscii("Build     " VORLUND_BUILD_DESCRIPTION));
    for (const TPluginReport& report : GetFileReports()) {
        if (report.outcome != PLUGIN_LOADED) continue;
        wstring line = VRL_L("Plug-in   ") + GetPluginTitle(report);
        if (report.version.Length() > 0) line += VRL_L(" ") + wstring(report.version.GetBuffer());
        if (report.licence.Length() > 0) line += VRL_L(", ") + wstring(report.licence.GetBuffer());
        if (report.libraries.Length() > 0) line += VRL_L(", with ") + wstring(report.libraries.GetBuffer());
        PrintLine(line + VRL_L(", ") + report.path.GetBuffer());
    }
}
